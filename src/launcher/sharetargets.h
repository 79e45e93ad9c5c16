#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

struct ApkLauncher;

/// Share targets, and the JSON text that lists them:
/// {package: {class: {"label", "caption", "icon": path, "mimetypes": [...], "multi": bool}}}.
/// Only the text of each target is kept: it is part of the whole text, which is made anew whenever
/// a single one changes.
class ShareTargets
{
public:
    /// Adds the activity's target, or replaces the one of the same package and class. False when
    /// that one is the same.
    bool set(const ApkLauncher &launcher);

    void removePackage(const QString &packageName);

    /// As QJsonDocument indents it.
    QByteArray toJson() const;

private:
    using Package = QMap<QString, QByteArray>; // texts by class

    QMap<QString, Package> m_packages;
};
