#pragma once

#include "daemon/filedescriptor.h"

class QString;

/// Files that the host hands over to be copied.
namespace SourceFile {

/// Opens a regular file, or the one that a symbolic link leads to, for reading. Anything else, such
/// as a FIFO, a device or a directory, is refused without being opened, and so is a file of the
/// kernel's making, as below "/proc" and "/sys". Not open on failure.
FileDescriptor open(const QString &path);

} // namespace SourceFile
