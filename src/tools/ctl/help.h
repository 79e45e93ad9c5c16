#pragma once

#include <QString>
#include <QVector>

struct Command;

/// Texts that derive from the command table.
namespace Help {

/// E.g. "bramctl install FILE... [--wait] [--timeout SECONDS]".
QString usage(const Command &command);

/// "bramctl --help": usage and one line per command.
QString overview(const QVector<Command> &commands);

/// "bramctl help COMMAND".
QString page(const Command &command);

} // namespace Help
