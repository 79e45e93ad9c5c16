#include "platform/binder/callstack.h"
#include "platform/binder/commandbuffer.h"
#include "platform/binder/retrytimer.h"
#include "platform/binder/returnstream.h"
#include "support/testcase.h"

#include <QtTest>

#include <linux/android/binder.h>

using namespace Binder;

namespace {

QByteArray bytesOf(const CommandBuffer &commands)
{
    return QByteArray(commands.data(), static_cast<int>(commands.size()));
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

class TestCommandStream : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void commandsAreEncodedWithoutPadding();
    void transactionsHaveTheLayoutOf64Bits();
    void whatTheDriverHasTakenIsRemoved();
    void returnsAreSkippedByTheirSize();
    void aReturnThatIsCutOffEndsTheStream();

    void completionsGoToWhatWasSentFirst();
    void answersGoToTheInnermostCall();
    void aCallThatFailedAtOnceIsNotConfirmed();
    void nothingIsSaidOfACallThatTheDriverHasNotTaken();

    void retriesSlowDownAfterAMinute();
};

void TestCommandStream::commandsAreEncodedWithoutPadding()
{
    CommandBuffer commands;
    commands.append(BC_ENTER_LOOPER);
    commands.append(BC_ACQUIRE, quint32(5));
    binder_handle_cookie death = {};
    death.handle = 5;
    death.cookie = 0x2a;
    commands.append(BC_REQUEST_DEATH_NOTIFICATION, death);
    commands.append(BC_INCREFS_DONE, binder_ptr_cookie{1, 2});
    commands.append(BC_FREE_BUFFER, quint64(0x1000));

    QCOMPARE(bytesOf(commands), hex("0c 63 00 00"
                                    "05 63 04 40  05 00 00 00"
                                    "0e 63 0c 40  05 00 00 00  2a 00 00 00 00 00 00 00"
                                    "08 63 10 40  01 00 00 00 00 00 00 00  02 00 00 00 00 00 00 00"
                                    "03 63 08 40  00 10 00 00 00 00 00 00"));
}

void TestCommandStream::transactionsHaveTheLayoutOf64Bits()
{
    binder_transaction_data request = {};
    request.code = 2;
    request.data_size = 0x54;
    request.data.ptr.buffer = 0x1000;
    binder_transaction_data reply = {};
    reply.flags = TF_STATUS_CODE;
    reply.data_size = 4;
    reply.data.ptr.buffer = 0x1000;
    CommandBuffer commands;
    commands.append(BC_TRANSACTION, request);
    commands.append(BC_REPLY, reply);

    QCOMPARE(bytesOf(commands),
             hex("00 63 40 40  0000000000000000  0000000000000000  02000000  00000000"
                 "0000000000000000  5400000000000000  0000000000000000"
                 "0010000000000000  0000000000000000"
                 "01 63 40 40  0000000000000000  0000000000000000  00000000  08000000"
                 "0000000000000000  0400000000000000  0000000000000000"
                 "0010000000000000  0000000000000000"));
}

void TestCommandStream::whatTheDriverHasTakenIsRemoved()
{
    CommandBuffer commands;
    commands.append(BC_ENTER_LOOPER);
    commands.append(BC_ACQUIRE, quint32(5));

    commands.consume(4);
    QCOMPARE(bytesOf(commands), hex("05 63 04 40  05 00 00 00"));
    commands.consume(8);
    QVERIFY(commands.isEmpty());
}

void TestCommandStream::returnsAreSkippedByTheirSize()
{
    const QByteArray bytes = hex("0c 72 00 00"                             // BR_NOOP
                                 "99 72 0c 80  00112233 44556677 8899aabb" // none that we know
                                 "0f 72 08 80  2a00000000000000");         // BR_DEAD_BINDER
    ReturnStream returns(bytes.constData(), static_cast<std::size_t>(bytes.size()));

    QVERIFY(returns.next());
    QCOMPARE(returns.code(), quint32(BR_NOOP));
    QVERIFY(returns.next());
    QVERIFY(returns.next());
    QCOMPARE(returns.code(), quint32(BR_DEAD_BINDER));
    QCOMPARE(returns.payload<quint64>(), quint64(0x2a));
    QVERIFY(!returns.next());
}

void TestCommandStream::aReturnThatIsCutOffEndsTheStream()
{
    for (const QByteArray &bytes : {hex("0c 72"), hex("0f 72 08 80  2a000000")}) {
        ReturnStream returns(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        QVERIFY(!returns.next());
    }
}

void TestCommandStream::completionsGoToWhatWasSentFirst()
{
    CallStack calls;
    OutgoingCall oneWay;
    oneWay.oneWay = true;
    calls.replySent();
    calls.begin(&oneWay);

    calls.onCompleted();
    QVERIFY(!oneWay.done);
    calls.onCompleted();
    QVERIFY(oneWay.done);
    QCOMPARE(oneWay.status, StatusOk);
    calls.end(&oneWay);
    calls.onCompleted();
}

void TestCommandStream::answersGoToTheInnermostCall()
{
    CallStack calls;
    OutgoingCall outer;
    OutgoingCall inner;
    calls.begin(&outer);
    calls.onCompleted();
    calls.begin(&inner);

    calls.onAnswered(StatusFailedTransaction, nullptr);
    QVERIFY(inner.done);
    QCOMPARE(inner.status, StatusFailedTransaction);
    QVERIFY(!outer.done);
    calls.end(&inner);

    calls.onAnswered(StatusOk, std::make_unique<IncomingData>(QByteArray()));
    QVERIFY(outer.done);
    QVERIFY(outer.reply != nullptr);
    calls.end(&outer);
}

void TestCommandStream::aCallThatFailedAtOnceIsNotConfirmed()
{
    CallStack calls;
    OutgoingCall failed;
    calls.begin(&failed);
    calls.onAnswered(StatusDeadObject, nullptr);
    calls.end(&failed);

    OutgoingCall next;
    next.oneWay = true;
    calls.begin(&next);
    calls.onCompleted();
    QVERIFY(next.done);
    calls.end(&next);
}

void TestCommandStream::nothingIsSaidOfACallThatTheDriverHasNotTaken()
{
    CallStack calls;
    OutgoingCall call;
    call.commandEnd = 68;
    OutgoingCall oneWay;
    oneWay.oneWay = true;
    oneWay.commandEnd = 136;
    calls.begin(&call);

    // the failure of an earlier command, which kept the driver from taking this one
    calls.onTaken(67);
    calls.onAnswered(StatusFailedTransaction, nullptr);
    calls.onCompleted();
    QVERIFY(!call.done);

    calls.onTaken(68);
    calls.onCompleted();
    calls.onAnswered(StatusDeadObject, nullptr);
    QVERIFY(call.done);
    QCOMPARE(call.status, StatusDeadObject);
    calls.end(&call);

    calls.begin(&oneWay);
    calls.onCompleted();
    QVERIFY(!oneWay.done);
    calls.onTaken(136);
    calls.onCompleted();
    QVERIFY(oneWay.done);
    calls.end(&oneWay);
}

void TestCommandStream::retriesSlowDownAfterAMinute()
{
    QCOMPARE(retryInterval(0), 1000);
    QCOMPARE(retryInterval(59999), 1000);
    QCOMPARE(retryInterval(60000), 8000);
    QCOMPARE(retryInterval(3600000), 8000);
}

QTEST_GUILESS_MAIN(TestCommandStream)
#include "test_commandstream.moc"
