#pragma once

#include <QVector>

struct Command;

/// The Android runtime as a whole: its state, its start and stop, its version and disk use.
QVector<Command> runtimeCommands();
