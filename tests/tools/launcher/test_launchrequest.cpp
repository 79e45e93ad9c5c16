#include "support/testcase.h"
#include "tools/launcher/launchrequest.h"

#include <QtTest>

namespace {

const QString Apk = QStringLiteral("org.example.a.apk");
const QString Activity = QStringLiteral("org.example.a/org.example.a.Main");

} // namespace

class TestLaunchRequest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_command_line_of_an_entry_is_read_data();
    void a_command_line_of_an_entry_is_read();
    void the_class_is_what_follows_the_first_slash_data();
    void the_class_is_what_follows_the_first_slash();
    void what_no_entry_runs_is_refused_data();
    void what_no_entry_runs_is_refused();
};

void TestLaunchRequest::a_command_line_of_an_entry_is_read_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("opened");

    const QString d = QStringLiteral("-d");
    const QString file = QStringLiteral("/a b.pdf");
    const QString link = QStringLiteral("https://example.org");
    QTest::newRow("a launcher") << QStringList() << QStringList();
    QTest::newRow("a handler with nothing to open") << QStringList{d} << QStringList();
    QTest::newRow("an empty word is nothing to open") << QStringList{d, QString()} << QStringList();
    QTest::newRow("an empty word beside a file")
        << QStringList{d, QString(), file} << QStringList{file};
    QTest::newRow("a file") << QStringList{d, file} << QStringList{file};
    QTest::newRow("several, in their order")
        << QStringList{d, link, file} << QStringList{link, file};
    QTest::newRow("a file named like an option") << QStringList{d, d} << QStringList{d};
    QTest::newRow("a file named --help")
        << QStringList{d, QStringLiteral("--help")} << QStringList{QStringLiteral("--help")};
    QTest::newRow("a file named like the activity")
        << QStringList{d, Apk, Activity} << QStringList{Apk, Activity};
}

void TestLaunchRequest::a_command_line_of_an_entry_is_read()
{
    QFETCH(QStringList, before);

    const LaunchCommand command = readLaunchCommand(before + QStringList{Apk, Activity});

    QVERIFY2(command.outcome.isDone(), qPrintable(command.outcome.sentence));
    QCOMPARE(command.request.package, QStringLiteral("org.example.a"));
    QCOMPARE(command.request.className, QStringLiteral("org.example.a.Main"));
    QTEST(command.request.opened, "opened");
}

void TestLaunchRequest::the_class_is_what_follows_the_first_slash_data()
{
    QTest::addColumn<QString>("className");

    QTest::newRow("nested") << QStringLiteral("org.example.a.Outer$Inner");
    QTest::newRow("of another package") << QStringLiteral("com.example.Main");
    QTest::newRow("short") << QStringLiteral(".Main");
    QTest::newRow("with a slash") << QStringLiteral("a/b");
    QTest::newRow("not Latin") << QStringLiteral("org.example.a.Début");
}

void TestLaunchRequest::the_class_is_what_follows_the_first_slash()
{
    QFETCH(QString, className);

    const LaunchCommand command =
        readLaunchCommand({Apk, QStringLiteral("org.example.a/") + className});

    QCOMPARE(command.request.className, className);
}

void TestLaunchRequest::what_no_entry_runs_is_refused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("what");

    const QString tooFew = QStringLiteral("PACKAGE.apk and PACKAGE/CLASS are needed.");
    const QString d = QStringLiteral("-d");
    QTest::newRow("nothing") << QStringList() << tooFew;
    QTest::newRow("no activity") << QStringList{Apk} << tooFew;
    QTest::newRow("only -d") << QStringList{d} << tooFew;
    QTest::newRow("an activity only, behind -d") << QStringList{d, Activity} << tooFew;
    QTest::newRow("the wrong way round")
        << QStringList{Activity, Apk}
        << QStringLiteral("“org.example.a/org.example.a.Main” is not PACKAGE.apk.");
    QTest::newRow("an ending without a package") << QStringList{QStringLiteral(".apk"), Activity}
                                                 << QStringLiteral("“.apk” is not PACKAGE.apk.");
    QTest::newRow("an empty word")
        << QStringList{QString(), Activity} << QStringLiteral("“” is not PACKAGE.apk.");
    QTest::newRow("no class") << QStringList{Apk, QStringLiteral("org.example.a")}
                              << QStringLiteral("“org.example.a” is not PACKAGE/CLASS.");
    QTest::newRow("an empty class") << QStringList{Apk, QStringLiteral("org.example.a/")}
                                    << QStringLiteral("“org.example.a/” is not PACKAGE/CLASS.");
    QTest::newRow("an empty package") << QStringList{Apk, QStringLiteral("/Main")}
                                      << QStringLiteral("“/Main” is not PACKAGE/CLASS.");
    QTest::newRow("two packages")
        << QStringList{Apk, QStringLiteral("org.example.b/Main")}
        << QStringLiteral("“org.example.a.apk” and “org.example.b/Main” name different packages.");
    QTest::newRow("a package that the other begins with")
        << QStringList{Apk, QStringLiteral("org.example.a.b/Main")}
        << QStringLiteral(
               "“org.example.a.apk” and “org.example.a.b/Main” name different packages.");
    QTest::newRow("a file without -d")
        << QStringList{QStringLiteral("/a.pdf"), Apk, Activity}
        << QStringLiteral("What is to be opened stands behind “-d”.");
}

void TestLaunchRequest::what_no_entry_runs_is_refused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, what);

    const LaunchCommand command = readLaunchCommand(arguments);

    QCOMPARE(static_cast<int>(command.outcome.status), static_cast<int>(ExitStatus::Usage));
    QCOMPARE(command.outcome.sentence, what + QStringLiteral(" See “bramd-launcher --help”."));
    QCOMPARE(command.request.package, QString());
}

QTEST_GUILESS_MAIN(TestLaunchRequest)
#include "test_launchrequest.moc"
