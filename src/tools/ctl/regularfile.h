#pragma once

#include <QByteArray>
#include <QString>

/// What is found when a file of the daemon's is read as the user of this program.
struct RegularFile
{
    enum class State {
        Read,
        Missing,
        Unreadable, ///< permissions, also those of its directories; I/O errors
        Unusable,   ///< no regular file, or larger than any real one
    };

    State state = State::Missing;
    QByteArray content;

    bool isRead() const { return state == State::Read; }

    /// Never waits: neither for the other end of a pipe nor for a device. A link counts as what
    /// it leads to.
    static RegularFile read(const QString &path);

    /// Whether there is or may be a directory that the user of this program may not look into.
    static bool isClosedDirectory(const QString &path);
};
