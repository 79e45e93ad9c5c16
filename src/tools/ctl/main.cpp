#include "tools/common/toolapplication.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/blacklistfile.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commandline.h"
#include "tools/ctl/commandtable.h"
#include "tools/ctl/completion.h"
#include "tools/ctl/context.h"
#include "tools/ctl/help.h"
#include "tools/ctl/output.h"
#include "tools/ctl/regularfile.h"
#include "tools/ctl/sharetarget.h"

namespace {

Outcome usageError(const QString &error, const QString &nextStep)
{
    return {ExitStatus::Usage, error + QLatin1Char(' ') + nextStep};
}

Outcome run(const QStringList &words, Context &context)
{
    const QString name = words.value(0);
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        context.out().text(Help::overview(CommandTable::commands()).trimmed());
        return {};
    }
    if (name == QLatin1String("--complete")) { // for the completion scripts of shells
        const CompletionSources sources{
            CommandTable::commands(), AppEntries::appsOf(AppEntries::readAll()),
            RegisteredTargets::read().targets,
            BlacklistFile::packages(RegularFile::read(BlacklistFile::path()).content)};
        const QStringList fitting = Completion::lines(Completion::suggest(sources, words.mid(1)));
        for (const QString &word : fitting)
            context.out().text(word);
        return {};
    }

    if (name == QLatin1String("--version")) {
        return usageError(QStringLiteral("“%1” is one argument too many.").arg(words.at(1)),
                          QStringLiteral("Usage: bramctl --version"));
    }
    if (name.startsWith(QLatin1Char('-'))) {
        return usageError(
            QStringLiteral("There is no option %1 before the command: options stand behind it.")
                .arg(name),
            QStringLiteral("“bramctl --help” lists the commands."));
    }

    const Command *command = CommandTable::find(name);
    if (!command) {
        return usageError(name.isEmpty() ? QStringLiteral("A command is missing.")
                                         : QStringLiteral("There is no command “%1”.").arg(name),
                          QStringLiteral("“bramctl --help” lists them."));
    }
    const ParsedCommandLine parsed = parseCommandLine(*command, words.mid(1));
    if (parsed.wantsHelp) {
        context.out().text(Help::page(*command).trimmed());
        return {};
    }
    if (!parsed.error.isEmpty())
        return usageError(parsed.error, QStringLiteral("Usage: %1").arg(Help::usage(*command)));
    context.out().setLost(command->effect == Effect::Acts ? LostOutput::MayHaveActed
                                                          : LostOutput::AskAgain);
    return command->handler(parsed.invocation, context);
}

} // namespace

int main(int argc, char *argv[])
{
    const ToolApplication application(argc, argv, QStringLiteral("bramctl"));
    const QStringList words = application.words();
    if (words == QStringList(QStringLiteral("--version")))
        return ToolApplication::printVersion();
    Context context;
    const Outcome outcome = run(words, context);
    const Outcome &written = context.out().written();
    return reportOutcome(written.isDone() || !outcome.sentence.isEmpty() ? outcome : written);
}
