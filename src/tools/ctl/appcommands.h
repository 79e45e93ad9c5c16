#pragma once

#include <QVector>

struct Command;

/// What can be asked about apps that are installed, and done with them.
QVector<Command> appCommands();
