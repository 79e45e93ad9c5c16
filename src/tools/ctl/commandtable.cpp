#include "tools/ctl/commandtable.h"

#include "tools/ctl/appcommands.h"
#include "tools/ctl/command.h"
#include "tools/ctl/context.h"
#include "tools/ctl/diagnosiscommands.h"
#include "tools/ctl/help.h"
#include "tools/ctl/hidingcommands.h"
#include "tools/ctl/openingcommands.h"
#include "tools/ctl/packagecommands.h"
#include "tools/ctl/runtimecommands.h"
#include "tools/ctl/sharecommands.h"

#include <algorithm>

namespace CommandTable {

namespace {

Outcome help(const Invocation &invocation, Context &context)
{
    if (invocation.arguments.isEmpty()) {
        context.out().text(Help::overview(commands()).trimmed());
        return {};
    }
    const QString &name = invocation.arguments.first();
    const Command *command = find(name);
    if (!command) {
        return {ExitStatus::Usage,
                QStringLiteral("There is no command “%1”. “bramctl help” lists them.").arg(name)};
    }
    context.out().text(Help::page(*command).trimmed());
    return {};
}

QVector<Command> helpCommands()
{
    return {{QStringLiteral("help"),
             {{QStringLiteral("COMMAND"), ArgumentKind::CommandName, true, false}},
             {},
             QStringLiteral("Explain a command"),
             QString(),
             help,
             Effect::Answers}};
}

} // namespace

const QVector<Command> &commands()
{
    static const QVector<Command> table = packageCommands() + appCommands() + openingCommands() +
                                          shareCommands() + runtimeCommands() + hidingCommands() +
                                          diagnosisCommands() + helpCommands();
    return table;
}

const Command *find(const QString &name)
{
    const QVector<Command> &table = commands();
    const auto found = std::find_if(table.cbegin(), table.cend(), [&name](const Command &command) {
        return command.name == name;
    });
    return found == table.cend() ? nullptr : &*found;
}

} // namespace CommandTable
