#pragma once

#include <QString>
#include <QVector>

struct Command;

namespace CommandTable {

/// All commands, in the order in which people read about them.
const QVector<Command> &commands();

/// Null when there is none of that name.
const Command *find(const QString &name);

} // namespace CommandTable
