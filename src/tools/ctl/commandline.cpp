#include "tools/ctl/commandline.h"

#include "tools/ctl/command.h"

#include <algorithm>

namespace {

const Option *findOption(const Command &command, const QString &name)
{
    const auto found = std::find_if(command.options.cbegin(), command.options.cend(),
                                    [&name](const Option &option) { return option.name == name; });
    return found == command.options.cend() ? nullptr : &*found;
}

/// Takes the option at `index` and, if it has one, its value; returns an error or nothing.
QString takeOption(const Command &command, const QStringList &words, int &index,
                   Invocation &invocation)
{
    const QString &word = words.at(index);
    const int separator = word.indexOf(QLatin1Char('='));
    const QString name = word.left(separator);
    const Option *option = findOption(command, name);
    if (!option)
        return QStringLiteral("There is no option %1.").arg(name);

    QStringList &values = invocation.options[name];
    if (option->valueName.isEmpty()) {
        return separator < 0 ? QString()
                             : QStringLiteral("The option %1 takes no value.").arg(name);
    }
    if (separator < 0 && index + 1 == words.size()) {
        return QStringLiteral("The option %1 needs a value: %2.").arg(name, option->valueName);
    }
    values.append(separator < 0 ? words.at(++index) : word.mid(separator + 1));
    return values.last().isEmpty() ? QStringLiteral("The value of %1 is empty.").arg(name)
                                   : QString();
}

QString checkNumberOfArguments(const Command &command, const QStringList &given)
{
    const QVector<Argument> &wanted = command.arguments;
    if (given.size() < wanted.size() && !wanted.at(given.size()).isOptional)
        return QStringLiteral("%1 is missing.").arg(wanted.at(given.size()).name);
    const bool unlimited = !wanted.isEmpty() && wanted.last().isRepeated;
    if (given.size() > wanted.size() && !unlimited)
        return QStringLiteral("“%1” is one argument too many.").arg(given.at(wanted.size()));
    return QString();
}

QString checkArguments(const Command &command, const QStringList &given)
{
    for (int index = 0; index < std::min(given.size(), command.arguments.size()); ++index) {
        const QString &word = given.at(index);
        if (command.arguments.at(index).kind == ArgumentKind::OnOff &&
            word != QLatin1String("on") && word != QLatin1String("off"))
            return QStringLiteral("“%1” is neither “on” nor “off”.").arg(word);
    }
    if (given.contains(QString()))
        return QStringLiteral("An argument is empty.");
    return QString();
}

QString checkRequiredOptions(const Command &command, const Invocation &invocation)
{
    for (const Option &option : command.options) {
        if (option.isRequired && !invocation.has(option.name))
            return QStringLiteral("%1 %2 is missing.").arg(option.name, option.valueName);
    }
    return QString();
}

} // namespace

ParsedCommandLine parseCommandLine(const Command &command, const QStringList &words)
{
    ParsedCommandLine parsed;
    Invocation &invocation = parsed.invocation;
    bool optionsEnded = false;
    for (int index = 0; index < words.size() && parsed.error.isEmpty(); ++index) {
        const QString &word = words.at(index);
        parsed.wantsHelp =
            !optionsEnded && (word == QLatin1String("--help") || word == QLatin1String("-h"));
        if (parsed.wantsHelp)
            return parsed;
        if (!optionsEnded && word == QLatin1String("--"))
            optionsEnded = true;
        else if (!optionsEnded && word.startsWith(QLatin1Char('-')) && word.size() > 1)
            parsed.error = takeOption(command, words, index, invocation);
        else
            invocation.arguments.append(word);
    }

    if (parsed.error.isEmpty())
        parsed.error = checkNumberOfArguments(command, invocation.arguments);
    if (parsed.error.isEmpty())
        parsed.error = checkArguments(command, invocation.arguments);
    if (parsed.error.isEmpty())
        parsed.error = checkRequiredOptions(command, invocation);
    return parsed;
}
