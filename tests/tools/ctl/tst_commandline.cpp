#include "support/testcase.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commandline.h"
#include "tools/ctl/intentextras.h"
#include "tools/ctl/literals.h"

#include <QtTest>

namespace {

Command sample()
{
    Command command;
    command.name = QStringLiteral("share");
    command.arguments = {{QStringLiteral("FILE"), ArgumentKind::File, false, true}};
    command.options = {
        {QStringLiteral("--to"), QStringLiteral("TARGET"), ArgumentKind::Target, QString(), true},
        {QStringLiteral("--text"), QString(), ArgumentKind::Word, QString(), false}};
    return command;
}

Command switching()
{
    Command command;
    command.name = QStringLiteral("boot");
    command.arguments = {{QStringLiteral("PKG"), ArgumentKind::Package, false, false},
                         {QStringLiteral("on|off"), ArgumentKind::OnOff, true, false}};
    return command;
}

QStringList split(const QString &words)
{
    return words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class CommandLineTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void takesArgumentsAndOptionsInAnyOrder_data();
    void takesArgumentsAndOptionsInAnyOrder();
    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();
    void takesAWishForHelpAnywhere_data();
    void takesAWishForHelpAnywhere();
    void checksOnAndOff();
    void readsExtras();
    void refusesExtrasThatAreNone_data();
    void refusesExtrasThatAreNone();
};

void CommandLineTest::takesArgumentsAndOptionsInAnyOrder_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("isText");
    QTest::newRow("option last") << "a b --to x"_q << QStringList({"a"_q, "b"_q}) << "x"_q << false;
    QTest::newRow("option first") << "--to x a"_q << QStringList({"a"_q}) << "x"_q << false;
    QTest::newRow("value behind =") << "--to=x=y a"_q << QStringList({"a"_q}) << "x=y"_q << false;
    QTest::newRow("flag between") << "a --text b --to x"_q << QStringList({"a"_q, "b"_q}) << "x"_q
                                  << true;
    QTest::newRow("last value counts")
        << "a --to x --to y"_q << QStringList({"a"_q}) << "y"_q << false;
    QTest::newRow("after --") << "--to x -- --text"_q << QStringList({"--text"_q}) << "x"_q
                              << false;
    QTest::newRow("a lone dash") << "- --to x"_q << QStringList({"-"_q}) << "x"_q << false;
}

void CommandLineTest::takesArgumentsAndOptionsInAnyOrder()
{
    QFETCH(QString, words);
    const ParsedCommandLine parsed = parseCommandLine(sample(), split(words));
    QCOMPARE(parsed.error, QString());
    QTEST(parsed.invocation.arguments, "arguments");
    QTEST(parsed.invocation.value(QStringLiteral("--to")), "target");
    QTEST(parsed.invocation.has(QStringLiteral("--text")), "isText");
}

void CommandLineTest::tellsWhatIsWrong_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("error");
    QTest::newRow("no argument") << "--to x"_q
                                 << "FILE is missing."_q;
    QTest::newRow("required option") << "a"_q
                                     << "--to TARGET is missing."_q;
    QTest::newRow("no value") << "a --to"_q
                              << "The option --to needs a value: TARGET."_q;
    QTest::newRow("empty value") << "a --to="_q
                                 << "The value of --to is empty."_q;
    QTest::newRow("unknown") << "a --to x -z"_q
                             << "There is no option -z."_q;
    QTest::newRow("value of a flag") << "a --to x --text=y"_q
                                     << "The option --text takes no value."_q;
}

void CommandLineTest::tellsWhatIsWrong()
{
    QFETCH(QString, words);
    QTEST(parseCommandLine(sample(), split(words)).error, "error");
}

void CommandLineTest::takesAWishForHelpAnywhere_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("wantsHelp");
    QTest::newRow("alone") << "--help"_q << true;
    QTest::newRow("short") << "-h"_q << true;
    QTest::newRow("behind an argument") << "a --help"_q << true;
    QTest::newRow("before what is wrong") << "--help --colour"_q << true;
    QTest::newRow("not as a value") << "a --to --help"_q << false;
    QTest::newRow("not when options have ended") << "--to x -- --help"_q << false;
}

void CommandLineTest::takesAWishForHelpAnywhere()
{
    QFETCH(QString, words);
    const ParsedCommandLine parsed = parseCommandLine(sample(), split(words));
    QTEST(parsed.wantsHelp, "wantsHelp");
    QCOMPARE(parsed.error, QString());
}

void CommandLineTest::checksOnAndOff()
{
    QCOMPARE(parseCommandLine(switching(), {"a"_q}).error, QString());
    QCOMPARE(parseCommandLine(switching(), {"a"_q, "off"_q}).error, QString());
    QCOMPARE(parseCommandLine(switching(), {"a"_q, "On"_q}).error,
             QStringLiteral("“On” is neither “on” nor “off”."));
    QCOMPARE(parseCommandLine(switching(), {"a"_q, "on"_q, "b"_q}).error,
             QStringLiteral("“b” is one argument too many."));
    QCOMPARE(parseCommandLine(switching(), {""_q}).error, QStringLiteral("An argument is empty."));
}

void CommandLineTest::readsExtras()
{
    Invocation invocation;
    invocation.options = {{QStringLiteral("--extra"), {"a=b=c"_q, "empty="_q}},
                          {QStringLiteral("--extra-int"), {"n=-2147483648"_q}},
                          {QStringLiteral("--extra-bool"), {"t=true"_q, "f=false"_q}}};
    const IntentExtras extras = IntentExtras::parse(invocation);
    QCOMPARE(extras.error, QString());
    QCOMPARE(extras.values, QVariantMap({{"a"_q, "b=c"_q},
                                         {"empty"_q, ""_q},
                                         {"n"_q, std::numeric_limits<int>::min()},
                                         {"t"_q, true},
                                         {"f"_q, false}}));
}

void CommandLineTest::refusesExtrasThatAreNone_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("value");
    QTest::newRow("no key") << "--extra"_q
                            << "=b"_q;
    QTest::newRow("no =") << "--extra"_q
                          << "a"_q;
    QTest::newRow("no number") << "--extra-int"_q
                               << "a=b"_q;
    QTest::newRow("too large") << "--extra-int"_q
                               << "a=2147483648"_q;
    QTest::newRow("no truth") << "--extra-bool"_q
                              << "a=yes"_q;
}

void CommandLineTest::refusesExtrasThatAreNone()
{
    QFETCH(QString, option);
    QFETCH(QString, value);
    Invocation invocation;
    invocation.options = {{option, {value}}};
    QVERIFY(
        IntentExtras::parse(invocation).error.startsWith(option + QLatin1String(" takes KEY=")));
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"
