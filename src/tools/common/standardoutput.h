#pragma once

#include "tools/common/outcome.h"

#include <QByteArray>

/// Has the descriptors 0 to 2 belong to somebody when the program was started without them, lest
/// what it opens next, such as the connection to a bus, takes their place and is written to.
/// Reading from such an input and writing to such an output fails. Call it before anything is
/// opened.
void occupyStandardStreams();

/// What is to be done about output that was lost.
enum class LostOutput {
    AskAgain,    ///< it was all that was asked for
    MayHaveActed ///< what it tells of has been done, or may have been
};

/// Writes to standard output, at once, so that a reader at the other end of a pipe sees it as it
/// comes. Not done when not all of it could be written, e.g. because the disk is full.
Outcome writeToStandardOutput(const QByteArray &text, LostOutput lost = LostOutput::AskAgain);
