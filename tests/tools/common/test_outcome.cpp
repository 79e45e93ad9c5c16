#include "support/testcase.h"
#include "tools/common/capturedstream.h"
#include "tools/common/outcome.h"

#include <QtTest>

class TestOutcome : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void the_first_failure_decides();
    void what_is_done_is_not_talked_about();
    void a_failure_is_one_line_in_any_locale_data();
    void a_failure_is_one_line_in_any_locale();
};

void TestOutcome::initTestCase()
{
    QCoreApplication::setApplicationName(QStringLiteral("a-tool"));
}

void TestOutcome::the_first_failure_decides()
{
    QVERIFY(firstFailure(ExitStatus::Done, ExitStatus::Done) == ExitStatus::Done);
    QVERIFY(firstFailure(ExitStatus::Done, ExitStatus::Refused) == ExitStatus::Refused);
    QVERIFY(firstFailure(ExitStatus::NotConfirmed, ExitStatus::Refused) ==
            ExitStatus::NotConfirmed);
    QVERIFY(firstFailure(ExitStatus::NotConfirmed, ExitStatus::Done) == ExitStatus::NotConfirmed);
}

void TestOutcome::what_is_done_is_not_talked_about()
{
    CapturedStream errors(stderr);

    QCOMPARE(reportOutcome({}), 0);

    QCOMPARE(errors.written(), QByteArray());
}

void TestOutcome::a_failure_is_one_line_in_any_locale_data()
{
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("plain") << QStringLiteral("No luck.") << QByteArray("a-tool: No luck.\n");
    QTest::newRow("beyond ASCII") << QStringLiteral("No “日本”.")
                                  << QByteArray("a-tool: No “日本”.\n");
    QTest::newRow("a file's name with a line break and commands for the terminal")
        << QStringLiteral("No a\nb\x1b[2J\u009b.") << QByteArray("a-tool: No a b [2J .\n");
    QTest::newRow("a percent sign")
        << QStringLiteral("No 100%s.") << QByteArray("a-tool: No 100%s.\n");
}

void TestOutcome::a_failure_is_one_line_in_any_locale()
{
    QFETCH(QString, sentence);
    CapturedStream errors(stderr);

    QCOMPARE(reportOutcome({ExitStatus::NotConfirmed, sentence}), 3);

    QTEST(errors.written(), "line");
}

QTEST_GUILESS_MAIN(TestOutcome)
#include "test_outcome.moc"
