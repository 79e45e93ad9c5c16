#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// Notices that the daemon has written an app's entries: the app is new, or something about it has
/// changed since the watch was made.
class InstallWatch
{
public:
    explicit InstallWatch(const QString &packageName);

    bool wasThereBefore() const { return !m_before.isEmpty(); }

    /// Whether there are entries now, and others than before or with another content.
    bool hasChanged() const;

private:
    /// Entries, icons and settings entries of the package, by path.
    QMap<QString, QByteArray> files() const;

    QString m_packageName;
    QMap<QString, QByteArray> m_before;
};
