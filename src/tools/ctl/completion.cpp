#include "tools/ctl/completion.h"

#include "config/runtimetext.h"
#include "tools/ctl/command.h"

#include <algorithm>

namespace Completion {

namespace {

/// What all kinds of words are made from.
struct Sources
{
    const QVector<Command> &commands;
    const QVector<App> &apps;
    const QVector<ShareTarget> &targets;
};

QVector<Suggestions::Word> commandNames(const Sources &sources)
{
    QVector<Suggestions::Word> words;
    for (const Command &command : sources.commands)
        words.append({command.name, command.summary});
    return words;
}

QVector<Suggestions::Word> packages(const Sources &sources)
{
    QVector<Suggestions::Word> words;
    for (const App &app : sources.apps)
        words.append({app.packageName, app.name});
    return words;
}

QVector<Suggestions::Word> targetNames(const Sources &sources)
{
    QVector<Suggestions::Word> words;
    for (const ShareTarget &target : sources.targets)
        words.append({target.component(), target.caption});
    return words;
}

Suggestions ofKind(ArgumentKind kind, const Sources &sources)
{
    switch (kind) {
    case ArgumentKind::File:
    case ArgumentKind::Item:
        return {{}, true};
    case ArgumentKind::Package:
    case ArgumentKind::App:
        return {packages(sources), false};
    case ArgumentKind::Target:
        return {targetNames(sources), false};
    case ArgumentKind::OnOff:
        return {{{QStringLiteral("on"), QString()}, {QStringLiteral("off"), QString()}}, false};
    case ArgumentKind::CommandName:
        return {commandNames(sources), false};
    case ArgumentKind::Word:
        break;
    }
    return {};
}

const Option *optionOf(const Command &command, const QString &name)
{
    const auto found = std::find_if(command.options.cbegin(), command.options.cend(),
                                    [&name](const Option &option) { return option.name == name; });
    return found == command.options.cend() ? nullptr : &*found;
}

/// Within a command: its options, the value of one, or the argument whose turn it is.
Suggestions inCommand(const Command &command, const QStringList &words, const Sources &sources)
{
    int arguments = 0;
    const Option *open = nullptr; ///< the option whose value comes next
    for (int index = 1; index + 1 < words.size(); ++index) {
        const QString &word = words.at(index);
        if (open) {
            open = nullptr;
        } else if (word.startsWith(QLatin1Char('-'))) {
            const Option *option = optionOf(command, word);
            open = option && !option->valueName.isEmpty() ? option : nullptr;
        } else {
            ++arguments;
        }
    }
    if (open)
        return ofKind(open->valueKind, sources);

    if (words.last().startsWith(QLatin1Char('-'))) {
        Suggestions suggestions;
        for (const Option &option : command.options)
            suggestions.words.append({option.name, option.help});
        return suggestions;
    }
    if (command.arguments.isEmpty())
        return {};
    const bool isBeyond = arguments >= command.arguments.size();
    if (isBeyond && !command.arguments.last().isRepeated)
        return {};
    return ofKind(command.arguments.at(std::min(arguments, command.arguments.size() - 1)).kind,
                  sources);
}

} // namespace

Suggestions suggest(const QVector<Command> &commands, const QStringList &words,
                    const QVector<App> &apps, const QVector<ShareTarget> &targets)
{
    const Sources sources{commands, apps, targets};
    Suggestions suggestions;
    if (words.size() < 2) {
        suggestions.words = commandNames(sources);
    } else {
        const auto command =
            std::find_if(commands.cbegin(), commands.cend(), [&words](const Command &candidate) {
                return candidate.name == words.first();
            });
        if (command != commands.cend())
            suggestions = inCommand(*command, words, sources);
    }

    const QString beginning = words.isEmpty() ? QString() : words.last();
    QVector<Suggestions::Word> fitting;
    for (const Suggestions::Word &word : qAsConst(suggestions.words)) {
        if (word.text.startsWith(beginning))
            fitting.append(word);
    }
    suggestions.words = fitting;
    return suggestions;
}

QStringList lines(const Suggestions &suggestions)
{
    QStringList texts;
    for (const Suggestions::Word &word : suggestions.words) {
        const QString text = RuntimeText::singleLine(word.text);
        const QString meaning = RuntimeText::singleLine(word.meaning);
        texts.append(meaning.isEmpty() ? text : text + QLatin1Char('\t') + meaning);
    }
    if (suggestions.files)
        texts.append(QStringLiteral(":files"));
    return texts;
}

} // namespace Completion
