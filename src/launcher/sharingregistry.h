#pragma once

#include <QJsonDocument>
#include <QString>

struct ApkLauncher;

/// The document with the activity's share target added, or replaced when the document has one of
/// the same package and class. A null document counts as an empty object.
QJsonDocument withShareTarget(const QJsonDocument &document, const ApkLauncher &launcher);

/// The document without all targets of a package.
QJsonDocument withoutPackage(const QJsonDocument &document, const QString &packageName);

/// The apps that take shared content, as the host's sharing front end reads them from
/// "/var/lib/bramd/sharing.json":
/// {package: {class: {"label", "caption", "icon": path, "mimetypes": [...], "multi": bool}}}.
/// When the file cannot be written the change is kept and goes out with the next one.
///
/// The document is kept in memory and written as a whole with every change, so it has a limit that
/// no honest phone comes near (300 targets take 150 kB). A target that does not fit is left out,
/// with one warning until a package goes.
class SharingRegistry
{
public:
    static constexpr int MaxBytes = 8 * 1024 * 1024;

    /// Empties the file (and makes its directory), so that no target of an earlier run survives.
    SharingRegistry();

    void add(const ApkLauncher &launcher);
    void removePackage(const QString &packageName);

private:
    QJsonDocument m_document;
    bool m_fullTold = false; ///< that a target does not fit
};
