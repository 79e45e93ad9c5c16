#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QTemporaryDir>

/// Builds APKs with aapt in a temporary directory.
class ApkBuilder
{
public:
    /// Adds a file of the "res" directory, e.g. "values/strings.xml".
    void addResource(const QString &path, const QByteArray &content);

    /// Builds an APK from this manifest and all resources added so far. Empty on failure.
    QString build(const QByteArray &manifest);

    /// A path in the temporary directory.
    QString path(const QString &name) const { return m_directory.filePath(name); }

private:
    bool write(const QString &path, const QByteArray &content) const;

    QTemporaryDir m_directory;
    int m_built = 0;
};

/// A manifest with this attribute of the application and these components in it.
QByteArray manifestOf(const char *package, int versionCode, const QByteArray &components,
                      const QByteArray &applicationAttributes = {});

/// An activity of that class with the filter of a launcher.
QByteArray launcherActivity(const QByteArray &className);
