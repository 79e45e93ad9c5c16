#include "support/testcase.h"
#include "tools/common/capturedstream.h"
#include "tools/common/standardoutput.h"

#include <QtTest>

#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

class TestStandardOutput : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void what_is_written_arrives_at_once();
    void what_cannot_be_written_is_told();
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

void TestStandardOutput::what_cannot_be_written_is_told()
{
    Outcome outcome;
    {
        CapturedStream restoring(stdout);
        const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        dup2(full, fileno(stdout));
        close(full);
        outcome = writeToStandardOutput(QByteArrayLiteral("a"));
        __fpurge(stdout);
        clearerr(stdout);
    }
    QCOMPARE(outcome.status, ExitStatus::Refused);
    QCOMPARE(outcome.sentence,
             QStringLiteral("The output could not be written (No space left on device). See where "
                            "it goes, and ask again."));
}

QTEST_GUILESS_MAIN(TestStandardOutput)
#include "test_standardoutput.moc"
