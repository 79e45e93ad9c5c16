#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// Notices that the daemon has written an app's entries: the app is new, or it was there and now is
/// in the version that is being installed. An app's files change for other reasons as well: entries
/// that are not announced any more go, and hidden apps come or go.
class InstallWatch
{
public:
    /// `versionName` is the one being installed; empty when that is not known: then any change
    /// counts.
    InstallWatch(const QString &packageName, const QString &versionName);

    bool wasThereBefore() const { return !m_before.isEmpty(); }

    /// Whether this version was there before, so that nothing need change.
    bool hadThisVersion() const;

    /// Whether there are entries now, and others than before or with another content.
    bool hasChanged() const;

private:
    using Files = QMap<QString, QByteArray>;

    /// Entries, icons and settings entries of the package, by path.
    Files files() const;
    bool haveThisVersion(const Files &files) const;

    QString m_packageName;
    QString m_versionName;
    Files m_before;
};
