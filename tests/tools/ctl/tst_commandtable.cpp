#include "support/testcase.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commandtable.h"
#include "tools/ctl/help.h"
#include "tools/ctl/literals.h"

#include <QRegularExpression>
#include <QSet>
#include <QtTest>

class CommandTableTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void rowsAreSound();
    void theOverviewHasEveryCommand();
    void usageShowsWhatIsOptionalAndRepeated();
    void aPageExplainsEveryOption();
    void helpFitsTerminals();
};

void CommandTableTest::rowsAreSound()
{
    const QRegularExpression optionName(QStringLiteral("^--[a-z][a-z-]+$"));
    QSet<QString> names;
    for (const Command &command : CommandTable::commands()) {
        QVERIFY2(command.handler, qUtf8Printable(command.name));
        QVERIFY2(!names.contains(command.name), qUtf8Printable(command.name));
        names.insert(command.name);
        QVERIFY2(!command.summary.isEmpty() && !command.summary.endsWith(QLatin1Char('.')),
                 qUtf8Printable(command.name));
        QCOMPARE(CommandTable::find(command.name), &command);
        for (int index = 0; index + 1 < command.arguments.size(); ++index)
            QVERIFY2(!command.arguments.at(index).isRepeated, qUtf8Printable(command.name));
        for (const Option &option : command.options) {
            QVERIFY2(optionName.match(option.name).hasMatch(), qUtf8Printable(option.name));
            QVERIFY2(!option.help.isEmpty(), qUtf8Printable(option.name));
        }
    }
    QVERIFY(!CommandTable::find("nonsense"_q));
}

void CommandTableTest::theOverviewHasEveryCommand()
{
    const QString overview = Help::overview(CommandTable::commands());
    for (const Command &command : CommandTable::commands()) {
        const QRegularExpression line(
            QStringLiteral("\n  %1 +%2\n")
                .arg(command.name, QRegularExpression::escape(command.summary)));
        QVERIFY2(line.match(overview).hasMatch(), qUtf8Printable(command.name));
    }
}

void CommandTableTest::usageShowsWhatIsOptionalAndRepeated()
{
    QCOMPARE(Help::usage(*CommandTable::find("install"_q)),
             "bramctl install FILE... [--wait] [--timeout SECONDS]"_q);
    QCOMPARE(Help::usage(*CommandTable::find("boot"_q)), "bramctl boot PKG [on|off] [--json]"_q);
    QVERIFY(Help::usage(*CommandTable::find("share"_q))
                .startsWith("bramctl share FILE|TEXT... --to PKG/CLASS [--text]"_q));
}

void CommandTableTest::aPageExplainsEveryOption()
{
    for (const Command &command : CommandTable::commands()) {
        const QString page = Help::page(command);
        QVERIFY(page.startsWith("Usage: bramctl %1"_q.arg(command.name)));
        for (const Option &option : command.options)
            QVERIFY2(page.contains(option.help), qUtf8Printable(option.name));
    }
}

void CommandTableTest::helpFitsTerminals()
{
    QString all = Help::overview(CommandTable::commands());
    for (const Command &command : CommandTable::commands())
        all += Help::page(command);
    for (const QString &line : all.split(QLatin1Char('\n')))
        QVERIFY2(line.size() <= 80, qUtf8Printable(line));
    const QString page = Help::page(*CommandTable::find("intent"_q)).section("\n\n"_q, 0, 0);
    QVERIFY(page.contains("\n       ["_q));
    QCOMPARE(page.simplified(), "Usage: "_q + Help::usage(*CommandTable::find("intent"_q)));
}

QTEST_GUILESS_MAIN(CommandTableTest)
#include "tst_commandtable.moc"
