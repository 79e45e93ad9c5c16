#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// The daemon's own desktop entries as they are on disk now, by package. Entries of other
/// programs are never listed.
class InstalledEntries
{
public:
    /// Lists and reads the entries. One that names no package is filed under the empty name, with
    /// a warning.
    InstalledEntries();

    /// Paths of all entries, ordered by package.
    QStringList all() const;

    /// Paths of one package's entries.
    QStringList ofPackage(const QString &packageName) const;

    /// The package that a desktop file belongs to; nothing when it is none of ours.
    std::optional<QString> packageOf(const QString &desktopFile) const;

private:
    QMap<QString, QStringList> m_paths;
};
