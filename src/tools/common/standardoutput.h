#pragma once

#include "tools/common/outcome.h"

#include <QByteArray>

/// Writes to standard output, at once, so that a reader at the other end of a pipe sees it as it
/// comes. Not done when not all of it could be written, e.g. because the disk is full.
Outcome writeToStandardOutput(const QByteArray &text);
