#include "support/testcase.h"
#include "tools/common/capturedstream.h"
#include "tools/ctl/confirmation.h"
#include "tools/ctl/literals.h"
#include "tools/ctl/output.h"

#include <QtTest>

class OutputTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void keepsALineToItsLine();
    void leavesItsOwnTextsAlone();
    void asksOnOneLine();
};

void OutputTest::keepsALineToItsLine()
{
    QByteArray written;
    {
        CapturedStream stream(stdout);
        Output output;
        output.line(QStringLiteral("bramd has taken a\nb\x1b[2J.pdf"));
        output.lines({"Åse"_q, QStringLiteral("c\r")});
        written = stream.written();
    }
    QCOMPARE(written, QByteArray("bramd has taken a b [2J.pdf\nÅse\nc \n"));
}

void OutputTest::leavesItsOwnTextsAlone()
{
    QByteArray written;
    {
        CapturedStream stream(stdout);
        Output().text(QStringLiteral("Usage:\n\tbramctl"));
        written = stream.written();
    }
    QCOMPARE(written, QByteArray("Usage:\n\tbramctl\n"));
}

void OutputTest::asksOnOneLine()
{
    QVERIFY(freopen("/dev/null", "r", stdin));
    CapturedStream stream(stderr);
    QVERIFY(!Confirmation::ask(QStringLiteral("Delete a\nb\x1b[2J?")));
    QCOMPARE(stream.written(), QByteArray("Delete a b [2J? [y/N] \n"));
}

QTEST_GUILESS_MAIN(OutputTest)
#include "tst_output.moc"
