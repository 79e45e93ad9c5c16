#pragma once

#include "daemon/filedescriptor.h"

#include <QByteArray>
#include <QVector>

#include <sys/types.h>

class QString;

/// An open directory of the runtime's. There the runtime's root may put anything anywhere at any
/// time, symbolic links among it. So that the daemon, being the host's root, is not led out of it,
/// the way to the directory is walked step by step and without links, and what happens there is
/// done by the descriptor at the end of the walk and not by the path.
///
/// Names are bytes, because the runtime need not write them in UTF-8, and are without "/". Every
/// function fails when the directory is not open.
class RuntimeDirectory
{
public:
    /// Opens the directory `path`, which begins with `root`. A link at `root` or on the way there
    /// is the host's and is followed. Not open when there is no such directory, or a link in its
    /// place or on the way.
    static RuntimeDirectory open(const QString &root, const QString &path);

    /// The same, and makes what is missing, mode 0777 less the umask.
    static RuntimeDirectory make(const QString &root, const QString &path);

    bool isOpen() const { return m_descriptor.isOpen(); }

    bool setOwner(uid_t user, gid_t group) const;
    bool setMode(mode_t mode) const;

    /// The names of all regular files, and of all links, wherever these lead.
    QVector<QByteArray> files() const;

    bool contains(const QByteArray &name) const;

    /// Makes a file, for writing, readable by its owner only. Fails when there is anything by that
    /// name.
    FileDescriptor create(const QByteArray &name) const;

    /// The new name is taken from a file or link that has it.
    bool rename(const QByteArray &from, const QByteArray &to) const;

    /// Removes a file or link. Fails for a directory.
    bool remove(const QByteArray &name) const;

private:
    explicit RuntimeDirectory(FileDescriptor descriptor);

    FileDescriptor m_descriptor;
};
