#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

/// What is left behind when the daemon is killed, or the disk fails, between two steps: copies that
/// were not renamed yet, and icons and settings entries without the desktop entry that they were
/// for, by which alone they are found again otherwise.
namespace Leftovers {

/// Paths of all that belong to none of these desktop entries. Nothing must be being written.
QStringList find(const QSet<QString> &desktopFiles);

} // namespace Leftovers
