#pragma once

#include "daemon/filedescriptor.h"

class QString;
struct UserRights;

/// Files that the host hands over to be copied.
namespace SourceFile {

/// Opens a regular file, or the one that a symbolic link leads to, for reading. Anything else, such
/// as a FIFO, a device or a directory, is refused without being opened, and so is a file of the
/// kernel's making, as below "/proc" and "/sys". Not open on failure.
FileDescriptor open(const QString &path);

/// The same for somebody who may not have the daemon's rights: opens what these rights open. A
/// way to a file that leads through another process's open files or root directory, as below
/// "/proc", is refused, too: it passes by the directories that keep others from the file.
FileDescriptor open(const QString &path, const UserRights &rights);

} // namespace SourceFile
