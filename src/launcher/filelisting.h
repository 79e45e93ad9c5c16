#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Paths of the files, or links to files, in a directory whose names are wanted, in ascending
/// order. `directory` ends in "/".
///
/// A directory that cannot be listed, or not to its end, is logged; what was found before is
/// returned. One that does not exist is empty.
QStringList listFiles(const QString &directory,
                      const std::function<bool(const QString &name)> &isWanted);
