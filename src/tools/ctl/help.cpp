#include "tools/ctl/help.h"

#include "tools/ctl/command.h"
#include "tools/ctl/texttable.h"

namespace Help {

namespace {

QString spelledOut(const Argument &argument)
{
    const QString name = argument.isRepeated ? argument.name + QLatin1String("...") : argument.name;
    return argument.isOptional ? QStringLiteral("[%1]").arg(name) : name;
}

QString nameAndValue(const Option &option)
{
    return option.valueName.isEmpty() ? option.name
                                      : option.name + QLatin1Char(' ') + option.valueName;
}

/// Terminals are at least as wide.
constexpr int Columns = 80;

/// On lines of at most so many columns, those behind the first indented; none of the words is
/// divided.
QString wrapped(const QStringList &words, int indent)
{
    QString text;
    int column = 0;
    for (const QString &word : words) {
        const int width = TextTable::width(word);
        if (column > 0 && column + 1 + width > Columns) {
            text += QLatin1Char('\n') + QString(indent, QLatin1Char(' '));
            column = indent;
        } else if (column > 0) {
            text += QLatin1Char(' ');
            ++column;
        }
        text += word;
        column += width;
    }
    return text;
}

QStringList usageWords(const Command &command)
{
    QStringList words{QStringLiteral("bramctl"), command.name};
    for (const Argument &argument : command.arguments)
        words.append(spelledOut(argument));
    for (const Option &option : command.options) {
        const QString text = nameAndValue(option);
        words.append(option.isRequired ? text : QStringLiteral("[%1]").arg(text));
    }
    return words;
}

QString indented(const QVector<QStringList> &rows)
{
    QString text;
    const QStringList lines = TextTable::lines(rows);
    for (const QString &line : lines)
        text += QLatin1String("  ") + line + QLatin1Char('\n');
    return text;
}

} // namespace

QString usage(const Command &command)
{
    return usageWords(command).join(QLatin1Char(' '));
}

QString overview(const QVector<Command> &commands)
{
    QVector<QStringList> rows;
    for (const Command &command : commands)
        rows.append({command.name, command.summary});
    return QStringLiteral("Usage: bramctl COMMAND [ARGUMENT...]\n\n"
                          "Installs, opens and manages Android apps on this phone.\n\n"
                          "Commands:\n") +
           indented(rows) +
           QStringLiteral(
               "\n“bramctl help COMMAND” tells more about one of them; PKG is a package\n"
               "name as in “bramctl list”.\n"
               "Exit status: 0 done, 1 refused or failed, 2 usage, 3 not confirmed in "
               "time,\n4 daemon not reachable, 5 runtime not available.\n");
}

QString page(const Command &command)
{
    const QString start = QStringLiteral("Usage:");
    QString text = wrapped(QStringList(start) + usageWords(command), start.size() + 1) +
                   QStringLiteral("\n\n%1.\n").arg(command.summary);
    if (!command.details.isEmpty()) {
        text += QLatin1Char('\n') + wrapped(command.details.split(QLatin1Char(' ')), 0) +
                QLatin1Char('\n');
    }
    if (command.options.isEmpty())
        return text;
    QVector<QStringList> rows;
    for (const Option &option : command.options)
        rows.append({nameAndValue(option), option.help});
    return text + QLatin1String("\nOptions:\n") + indented(rows);
}

} // namespace Help
