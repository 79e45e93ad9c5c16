#pragma once

#include <QVector>

struct Command;

/// What opens something in the Android runtime.
QVector<Command> openingCommands();
