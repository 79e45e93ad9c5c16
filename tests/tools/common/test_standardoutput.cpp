#include "support/testcase.h"
#include "tools/common/capturedstream.h"
#include "tools/common/standardoutput.h"

#include <QtTest>

#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

Q_DECLARE_METATYPE(LostOutput)

class TestStandardOutput : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void what_is_written_arrives_at_once();
    void what_cannot_be_written_is_told_data();
    void what_cannot_be_written_is_told();
    void missing_streams_are_occupied();
};

void TestStandardOutput::what_is_written_arrives_at_once()
{
    Outcome outcome;
    QByteArray written;
    {
        CapturedStream stream(stdout);
        outcome = writeToStandardOutput(QByteArrayLiteral("a\nb"));
        written = stream.written();
    }
    QVERIFY(outcome.isDone());
    QCOMPARE(written, QByteArray("a\nb"));
}

void TestStandardOutput::what_cannot_be_written_is_told_data()
{
    QTest::addColumn<LostOutput>("lost");
    QTest::addColumn<QString>("advice");
    QTest::newRow("an answer") << LostOutput::AskAgain
                               << QStringLiteral("See where it goes, and ask again.");
    QTest::newRow("of an action")
        << LostOutput::MayHaveActed
        << QStringLiteral("See where it goes. What was asked for may have been done: see whether "
                          "it was before you ask again.");
}

void TestStandardOutput::what_cannot_be_written_is_told()
{
    QFETCH(LostOutput, lost);
    QFETCH(QString, advice);
    Outcome outcome;
    {
        CapturedStream restoring(stdout);
        const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        dup2(full, fileno(stdout));
        close(full);
        outcome = writeToStandardOutput(QByteArrayLiteral("a"), lost);
        __fpurge(stdout);
        clearerr(stdout);
    }
    QCOMPARE(outcome.status, ExitStatus::Refused);
    QCOMPARE(outcome.sentence,
             QStringLiteral("The output could not be written (No space left on device). ") +
                 advice);
}

void TestStandardOutput::missing_streams_are_occupied()
{
    char byte = 0;
    ssize_t read = 0;
    ssize_t written = 0;
    int next = 0;
    {
        CapturedStream restoringInput(stdin);
        CapturedStream restoringOutput(stdout);
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        occupyStandardStreams();
        next = dup(STDERR_FILENO);
        close(next);
        read = ::read(STDIN_FILENO, &byte, 1);
        written = ::write(STDOUT_FILENO, &byte, 1);
    }
    QVERIFY(next > STDERR_FILENO);
    QCOMPARE(read, ssize_t(-1));
    QCOMPARE(written, ssize_t(-1));
}

QTEST_GUILESS_MAIN(TestStandardOutput)
#include "test_standardoutput.moc"
