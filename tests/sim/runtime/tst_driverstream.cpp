#include "runtime/driverstream.h"
#include "support/testcase.h"

#include <QtTest>

#include <linux/android/binder.h>

using namespace SimRuntime;

class DriverStreamTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void splitsCommandsWithoutAlignment();
    void splitsOffUnknownCommandsBySize();
    void dropsACommandThatIsCutOff();
    void writesTheCodeAndThenThePayload();
};

void DriverStreamTest::splitsCommandsWithoutAlignment()
{
    const auto commands = splitReturns(QByteArray::fromHex("0c720000"                  // BR_NOOP
                                                           "0f720880 2a00000000000000" // dead
                                                           "06720000"));               // complete

    QCOMPARE(commands.size(), 3);
    QCOMPARE(commands.at(0).code, quint32(BR_NOOP));
    QCOMPARE(commands.at(1).code, quint32(BR_DEAD_BINDER));
    QCOMPARE(payloadAs<quint64>(commands.at(1)), quint64(42));
    QCOMPARE(commands.at(2).code, quint32(BR_TRANSACTION_COMPLETE));
}

void DriverStreamTest::splitsOffUnknownCommandsBySize()
{
    const auto commands = splitReturns(QByteArray::fromHex("63720480 01020304 06720000"));

    QCOMPARE(commands.size(), 2);
    QCOMPARE(commands.at(0).payload, QByteArray::fromHex("01020304"));
    QCOMPARE(commands.at(1).code, quint32(BR_TRANSACTION_COMPLETE));
}

void DriverStreamTest::dropsACommandThatIsCutOff()
{
    QCOMPARE(splitReturns(QByteArray::fromHex("0c720000 0f720880 2a000000")).size(), 1);
    QCOMPARE(splitReturns(QByteArray::fromHex("0c7200")).size(), 0);
}

void DriverStreamTest::writesTheCodeAndThenThePayload()
{
    QByteArray stream;
    appendCommand(&stream, BC_ENTER_LOOPER);
    appendCommand(&stream, BC_ACQUIRE, quint32(5));

    QCOMPARE(stream.toHex(), QByteArray("0c630000") + "05630440" + "05000000");
}

QTEST_GUILESS_MAIN(DriverStreamTest)
#include "tst_driverstream.moc"
