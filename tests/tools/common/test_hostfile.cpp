#include "support/hostfiles.h"
#include "support/testcase.h"
#include "tools/common/hostfile.h"

#include <QFile>
#include <QtTest>

namespace {

const QString Directory = QStringLiteral("/home/tester");

Location fileAt(const QString &name)
{
    return {Directory + QLatin1Char('/') + name, true};
}

} // namespace

/// In a private root: what is written below /home is nobody else's.
class TestHostFile : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void the_runtime_sees_the_users_home_and_memory_cards_data();
    void the_runtime_sees_the_users_home_and_memory_cards();
    void apps_are_handed_urls_and_files_that_are_there_data();
    void apps_are_handed_urls_and_files_that_are_there();
    void only_regular_files_are_read_data();
    void only_regular_files_are_read();
};

void TestHostFile::initTestCase()
{
    HostFiles::makeEmptyDirectory(Directory);
    HostFiles::write(fileAt(QStringLiteral("a.pdf")).address, "x");
}

void TestHostFile::the_runtime_sees_the_users_home_and_memory_cards_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("home");
    QTest::addColumn<bool>("isSeen");

    const auto row = [](const char *name, const char *path, const char *home, bool isSeen) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromUtf8(home) << isSeen;
    };
    row("a file at home", "/home/user/a.pdf", "/home/user", true);
    row("home itself", "/home/user", "/home/user", true);
    row("another user's file", "/home/other/a.pdf", "/home/user", false);
    row("another user with a longer name", "/home/user2/a.pdf", "/home/user", false);
    row("any user's file, when root asks", "/home/user/a.pdf", "", true);
    row("any user's file, for a home elsewhere", "/home/user/a.pdf", "/var/user", true);
    row("nobody's file", "/home", "", false);
    row("only a name that begins so", "/homework/a.pdf", "", false);
    row("a memory card", "/run/media/user/card/a.pdf", "/home/user", true);
    row("elsewhere", "/tmp/a.pdf", "/home/user", false);
    row("the system", "/etc/passwd", "", false);
}

void TestHostFile::the_runtime_sees_the_users_home_and_memory_cards()
{
    QFETCH(QString, path);
    QFETCH(QString, home);

    QTEST(HostFile::isSeenByRuntime(path, home), "isSeen");
}

void TestHostFile::apps_are_handed_urls_and_files_that_are_there_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<QString>("says");

    QTest::newRow("link") << QStringLiteral("https://example.org/a.pdf") << false << QString();
    QTest::newRow("file") << fileAt(QStringLiteral("a.pdf")).address << true << QString();
    QTest::newRow("directory") << Directory << true << QString();
    QTest::newRow("no file")
        << fileAt(QStringLiteral("b.pdf")).address << true
        << QStringLiteral("There is no file “/home/tester/b.pdf”. Look at its spelling, and "
                          "whether it was moved or deleted.");
    QTest::newRow("no UTF-8") << fileAt(QStringLiteral("caf\ufffd.pdf")).address << true
                              << QStringLiteral("The name “/home/tester/caf\ufffd.pdf” is not in "
                                                "UTF-8, or there is no such file: rename it, e.g. "
                                                "in a file manager.");
    QTest::newRow("elsewhere") << QStringLiteral("/etc/passwd") << true << QString();
}

void TestHostFile::apps_are_handed_urls_and_files_that_are_there()
{
    QFETCH(QString, address);
    QFETCH(bool, isFile);
    QFETCH(QString, says);

    const Outcome outcome = HostFile::checkForApps({address, isFile});

    QCOMPARE(outcome.sentence, says);
    QCOMPARE(outcome.isDone(), says.isEmpty());
    QVERIFY(says.isEmpty() || outcome.status == ExitStatus::Refused);
}

void TestHostFile::only_regular_files_are_read_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<QString>("says");

    QTest::newRow("file") << fileAt(QStringLiteral("a.pdf")).address << true << QString();
    QTest::newRow("elsewhere") << QStringLiteral("/etc/passwd") << true << QString();
    QTest::newRow("link") << QStringLiteral("https://example.org/a.apk") << false
                          << QStringLiteral("“https://example.org/a.apk” is not on this phone: "
                                            "download it first.");
    QTest::newRow("directory") << Directory << true
                               << QStringLiteral("“/home/tester” is no regular file: name a file.");
    QTest::newRow("no file") << fileAt(QStringLiteral("b.pdf")).address << true
                             << HostFile::missing(fileAt(QStringLiteral("b.pdf")).address).sentence;
}

void TestHostFile::only_regular_files_are_read()
{
    QFETCH(QString, address);
    QFETCH(bool, isFile);
    QFETCH(QString, says);

    const Outcome outcome = HostFile::checkForReading({address, isFile});

    QCOMPARE(outcome.sentence, says);
    QCOMPARE(outcome.isDone(), says.isEmpty());
}

QTEST_GUILESS_MAIN(TestHostFile)
#include "test_hostfile.moc"
