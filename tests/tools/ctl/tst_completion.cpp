#include "support/testcase.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commandtable.h"
#include "tools/ctl/completion.h"
#include "tools/ctl/literals.h"

#include <QtTest>

class CompletionTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void offersWhatFits_data();
    void offersWhatFits();
    void offersEveryCommandAndOption();
    void keepsEachWordToItsLine();
};

void CompletionTest::offersWhatFits_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QStringList &words, const QStringList &expected) {
        QTest::newRow(name) << words << expected;
    };
    const QString target = "org.a/org.a.Share\tFile it"_q;
    row("commands", {"st"_q},
        {"stop-app\tEnd an app that runs"_q,
         "status\tShow the state of bramd and of the Android runtime"_q,
         "start\tStart the Android runtime"_q, "stop\tStop the Android runtime and its apps"_q});
    row("packages", {"remove"_q, "org."_q}, {"org.a\tApp A"_q, "org.b"_q});
    row("packages that fit", {"remove"_q, "org.b"_q}, {"org.b"_q});
    row("only one package", {"remove"_q, "org.a"_q, ""_q}, {});
    row("several packages", {"size"_q, "org.a"_q, "org.b"_q}, {"org.b"_q});
    row("files", {"install"_q, ""_q}, {":files"_q});
    row("more files", {"install"_q, "a.apk"_q, ""_q}, {":files"_q});
    row("options", {"install"_q, "--w"_q}, {"--wait\tWait until the app is there"_q});
    row("value of an option", {"share"_q, "a"_q, "--to"_q, "org"_q}, {target});
    row("value within an option's word", {"share"_q, "a"_q, "--to=org"_q}, {"--to="_q + target});
    row("files within an option's word", {"intent"_q, "--data=/ho"_q}, {":files"_q});
    row("nothing within a flag", {"install"_q, "--wait=o"_q}, {});
    row("nothing within an unknown option", {"install"_q, "--no=o"_q}, {});
    row("apps", {"launch"_q, "org.a"_q}, {"org.a\tApp A"_q});
    row("classes of an app", {"launch"_q, "org.a/"_q}, {"org.a/org.a.Main\tApp A"_q});
    row("hidden apps", {"unhide"_q, "org."_q}, {"org.hidden"_q});
    row("after a value", {"share"_q, "--to"_q, "x"_q, ""_q}, {":files"_q});
    row("after a flag", {"install"_q, "--wait"_q, ""_q}, {":files"_q});
    row("on and off", {"boot"_q, "org.a"_q, "o"_q}, {"on"_q, "off"_q});
    row("nothing to add", {"status"_q, ""_q}, {});
    row("unknown command", {"nonsense"_q, ""_q}, {});
    row("help", {"help"_q, "unh"_q}, {"unhide\tTake an app off the list of hidden apps"_q});
}

void CompletionTest::offersWhatFits()
{
    QFETCH(QStringList, words);
    App first;
    first.packageName = "org.a"_q;
    first.name = "App A"_q;
    first.launchers = QStringList{"org.a.Main"_q};
    App second;
    second.packageName = "org.b"_q;
    ShareTarget target;
    target.packageName = "org.a"_q;
    target.className = "org.a.Share"_q;
    target.caption = "File it"_q;
    QTEST(Completion::lines(Completion::suggest(
              {CommandTable::commands(), {first, second}, {target}, {"org.hidden"_q}}, words)),
          "expected");
}

void CompletionTest::offersEveryCommandAndOption()
{
    const QVector<Command> &commands = CommandTable::commands();
    const CompletionSources sources{commands, {}, {}, {}};
    QCOMPARE(Completion::suggest(sources, {QString()}).words.size(), commands.size());
    QCOMPARE(Completion::suggest(sources, {}).words.size(), commands.size());
    for (const Command &command : commands) {
        QCOMPARE(Completion::suggest(sources, {command.name, "-"_q}).words.size(),
                 command.options.size());
    }
}

void CompletionTest::keepsEachWordToItsLine()
{
    Suggestions suggestions;
    suggestions.words = {{"a"_q, "b\nc\td"_q}, {"e\n"_q, QString()}};
    QCOMPARE(Completion::lines(suggestions), QStringList({"a\tb c d"_q, "e "_q}));
}

QTEST_GUILESS_MAIN(CompletionTest)
#include "tst_completion.moc"
