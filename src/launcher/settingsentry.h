#pragma once

#include <QByteArray>
#include <QString>

/// Entries of the host's settings application: one page per app in the app grid, which opens the
/// app's configuration.
namespace SettingsEntry {

/// The entry's JSON text for the app that a desktop file starts.
QByteArray content(const QString &desktopFile, const QString &packageName,
                   const QString &packageVersion);

/// Writes the entry where it belongs, unless it is there already. A failure is logged.
void write(const QString &desktopFile, const QString &packageName, const QString &packageVersion);

} // namespace SettingsEntry
