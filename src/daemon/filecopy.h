#pragma once

class FileDescriptor;

/// Copies the content of one open file into another one, which is empty. A file that is larger than
/// any APK can be, or than the space left on the disk, is refused, so that it neither fills the
/// disk nor holds up the daemon. One that grows meanwhile is copied as far as it went at the start.
/// False on failure, with errno telling why; part of the copy may then exist. Blocks until it is
/// done.
bool copyContent(const FileDescriptor &from, const FileDescriptor &to);
