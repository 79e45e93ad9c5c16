#include "binder/commandstream.h"
#include "support/testcase.h"

#include <QtTest>

#include <linux/android/binder.h>

using SimBinder::Command;
using SimBinder::CommandStream;

class TestCommandStream : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void commandsFollowWithoutPadding();
    void theEndIsTold();
    void aCommandThatIsCutOffIsNone_data();
    void aCommandThatIsCutOffIsNone();
    void messagesAreTwoCommands();
};

namespace {

CommandStream streamOf(const QByteArray &bytes)
{
    return CommandStream(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                         static_cast<std::size_t>(bytes.size()));
}

} // namespace

void TestCommandStream::commandsFollowWithoutPadding()
{
    // BC_REQUEST_DEATH_NOTIFICATION handle 5, cookie 0x2a; BC_ENTER_LOOPER; BC_ACQUIRE 7
    const QByteArray bytes = QByteArray::fromHex("0e630c40"
                                                 "05000000"
                                                 "2a00000000000000"
                                                 "0c630000"
                                                 "05630440"
                                                 "07000000");
    CommandStream stream = streamOf(bytes);

    const auto death = stream.next();
    QVERIFY(death.has_value());
    QCOMPARE(death->code, std::uint32_t(BC_REQUEST_DEATH_NOTIFICATION));
    const auto payload = death->payloadAs<binder_handle_cookie>();
    QCOMPARE(quint32(payload.handle), 5u);
    QCOMPARE(quint64(payload.cookie), quint64(0x2a));
    QCOMPARE(stream.position(), std::size_t(16));

    const auto looper = stream.next();
    QCOMPARE(looper->code, std::uint32_t(BC_ENTER_LOOPER));
    QCOMPARE(stream.position(), std::size_t(20));

    const auto acquire = stream.next();
    QCOMPARE(acquire->code, std::uint32_t(BC_ACQUIRE));
    QCOMPARE(acquire->payloadAs<std::uint32_t>(), std::uint32_t(7));
    QVERIFY(stream.atEnd());
}

void TestCommandStream::theEndIsTold()
{
    CommandStream stream = streamOf(QByteArray());
    QVERIFY(stream.atEnd());
    QVERIFY(!stream.next().has_value());
}

void TestCommandStream::aCommandThatIsCutOffIsNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("in the code") << QByteArray::fromHex("056304");
    QTest::newRow("before the payload") << QByteArray::fromHex("05630440");
    QTest::newRow("in the payload") << QByteArray::fromHex("05630440070000");
    QTest::newRow("largest payload") << QByteArray::fromHex("0563ff7f00000000");
}

void TestCommandStream::aCommandThatIsCutOffIsNone()
{
    QFETCH(QByteArray, bytes);
    CommandStream stream = streamOf(bytes);
    QVERIFY(!stream.next().has_value());
    QCOMPARE(stream.position(), std::size_t(0));
    QVERIFY(!stream.atEnd());
}

void TestCommandStream::messagesAreTwoCommands()
{
    QVERIFY(SimBinder::carriesMessage(BC_TRANSACTION));
    QVERIFY(SimBinder::carriesMessage(BC_REPLY));
    QVERIFY(!SimBinder::carriesMessage(BC_FREE_BUFFER));
    QVERIFY(!SimBinder::carriesMessage(BC_TRANSACTION_SG));
}

QTEST_GUILESS_MAIN(TestCommandStream)
#include "tst_commandstream.moc"
