#pragma once

#include <QVector>

struct Command;

/// Installing and removing apps.
QVector<Command> packageCommands();
