#pragma once

#include <QString>

/// What can be said of a file by its path.
namespace FileArgument {

/// Whether the name is one of the archives in which an app is split into several APKs.
bool isSplitArchive(const QString &path);

} // namespace FileArgument
