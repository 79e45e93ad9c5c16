#pragma once

class QString;

/// Copies the content of a regular file (or one that a symbolic link leads to) into a new file,
/// readable by its owner only. Anything else as the source, such as a FIFO, a device or a
/// directory, is refused without being opened. A file larger than the space left
/// on the disk is refused too, so that it does not fill it. False on failure, with errno telling
/// why; part of the copy may then exist. Blocks until it is done.
bool copyRegularFile(const QString &source, const QString &destination);
