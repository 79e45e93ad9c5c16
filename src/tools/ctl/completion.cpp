#include "tools/ctl/completion.h"

#include "config/runtimetext.h"
#include "tools/ctl/command.h"

#include <algorithm>

namespace Completion {

namespace {

QVector<Suggestions::Word> commandNames(const CompletionSources &sources)
{
    QVector<Suggestions::Word> words;
    for (const Command &command : sources.commands)
        words.append({command.name, command.summary});
    return words;
}

QVector<Suggestions::Word> packages(const CompletionSources &sources)
{
    QVector<Suggestions::Word> words;
    for (const App &app : sources.apps)
        words.append({app.packageName, app.name});
    return words;
}

QVector<Suggestions::Word> hiddenPackages(const CompletionSources &sources)
{
    QVector<Suggestions::Word> words;
    for (const QString &package : sources.hiddenPackages)
        words.append({package, QString()});
    return words;
}

/// Packages, and behind "PKG/" the classes that can be opened.
QVector<Suggestions::Word> launchable(const CompletionSources &sources, const QString &beginning)
{
    if (!beginning.contains(QLatin1Char('/')))
        return packages(sources);
    QVector<Suggestions::Word> words;
    for (const App &app : sources.apps) {
        for (const QString &className : app.launchers)
            words.append({app.packageName + QLatin1Char('/') + className, app.name});
    }
    return words;
}

QVector<Suggestions::Word> targetNames(const CompletionSources &sources)
{
    QVector<Suggestions::Word> words;
    for (const ShareTarget &target : sources.targets)
        words.append({target.component(), target.caption});
    return words;
}

Suggestions ofKind(ArgumentKind kind, const CompletionSources &sources, const QString &beginning)
{
    switch (kind) {
    case ArgumentKind::File:
    case ArgumentKind::Item:
        return {{}, true};
    case ArgumentKind::Package:
        return {packages(sources), false};
    case ArgumentKind::Hidden:
        return {hiddenPackages(sources), false};
    case ArgumentKind::App:
        return {launchable(sources, beginning), false};
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

/// The value of "--option=".
Suggestions valueWithin(const Command &command, const QString &word,
                        const CompletionSources &sources)
{
    const int separator = word.indexOf(QLatin1Char('='));
    const Option *option = optionOf(command, word.left(separator));
    if (!option || option->valueName.isEmpty())
        return {};
    Suggestions suggestions = ofKind(option->valueKind, sources, word.mid(separator + 1));
    for (Suggestions::Word &value : suggestions.words)
        value.text.prepend(word.left(separator + 1));
    return suggestions;
}

/// Within a command: its options, the value of one, or the argument whose turn it is.
Suggestions inCommand(const Command &command, const QStringList &words,
                      const CompletionSources &sources)
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
        return ofKind(open->valueKind, sources, words.last());

    if (words.last().startsWith(QLatin1Char('-'))) {
        if (words.last().contains(QLatin1Char('=')))
            return valueWithin(command, words.last(), sources);
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
                  sources, words.last());
}

} // namespace

Suggestions suggest(const CompletionSources &sources, const QStringList &words)
{
    const QVector<Command> &commands = sources.commands;
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
