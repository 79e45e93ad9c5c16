#pragma once

#include <QVector>

struct Command;

/// What helps to find out what is wrong.
QVector<Command> diagnosisCommands();
