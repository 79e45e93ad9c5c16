#pragma once

#include <QVector>

struct Command;

/// The list of apps that the host does not offer.
QVector<Command> hidingCommands();
