#pragma once

#include <QVector>

struct Command;

/// Sharing texts and files into apps.
QVector<Command> shareCommands();
