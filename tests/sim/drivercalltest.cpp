#include "sim/drivercalltest.h"

#include <QtTest>

#include <unistd.h>

void DriverCallTest::aCallArrivesWithWhatTheCalleeNeeds()
{
    Party owner(device());
    Party caller(device());
    const quint32 handle = handOver(owner, 1, caller);

    caller.write(Commands().call(handle, 0x5f504e47, QByteArray("request"), TF_ACCEPT_FDS));

    const Outcome outcome = owner.read();
    QCOMPARE(outcome.allNames(),
             (QStringList{QStringLiteral("BR_NOOP"), QStringLiteral("BR_TRANSACTION")}));
    const Return call = outcome.last();
    QCOMPARE(call.id, quint64(1));
    QCOMPARE(call.cookie, Message::cookieOf(1));
    QCOMPARE(call.callCode, 0x5f504e47u);
    QCOMPARE(call.flags, quint32(TF_ACCEPT_FDS));
    QCOMPARE(call.senderPid, qint32(caller.pid()));
    QCOMPARE(call.senderEuid, quint32(::geteuid()));
    QCOMPARE(call.data, QByteArray("request"));
    QVERIFY(call.offsets.isEmpty());
    owner.write(Commands().freeBuffer(call.address));
}

void DriverCallTest::aReplyComesWithTheCallsCompletion()
{
    Party caller(device());
    caller.write(Commands().call(0, 1, QByteArray("request")));
    QVERIFY(!caller.isReadable());

    const Return call = manager().read().last();
    manager().write(Commands().freeBuffer(call.address).reply(QByteArray("reply")));

    const Outcome outcome = caller.readUntil("BR_REPLY");
    QCOMPARE(outcome.names(),
             (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_REPLY")}));
    const Return reply = outcome.last();
    QCOMPARE(reply.data, QByteArray("reply"));
    QCOMPARE(reply.id, quint64(0));
    QCOMPARE(reply.senderPid, 0);
    QCOMPARE(manager().readNow().names(), QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    caller.write(Commands().freeBuffer(reply.address));
}

void DriverCallTest::aStatusReplyIsMarked()
{
    Party caller(device());
    caller.write(Commands().call(0, 1));
    const Return call = manager().read().last();

    manager().write(
        Commands().freeBuffer(call.address).reply(QByteArray("\x01\0\0\0", 4), TF_STATUS_CODE));

    const Return reply = caller.readUntil("BR_REPLY").last();
    QCOMPARE(reply.flags, quint32(TF_STATUS_CODE));
    QCOMPARE(reply.data, QByteArray("\x01\0\0\0", 4));
    caller.write(Commands().freeBuffer(reply.address));
}

void DriverCallTest::anEmptyMessageHasAnAddressOfItsOwn()
{
    Party caller(device());
    caller.write(Commands().oneWay(0, 1));
    Party other(device());
    other.write(Commands().call(0, 2));

    const Return first = manager().read().last();
    const Return second = manager().read().last();

    QVERIFY(first.data.isEmpty());
    QVERIFY(second.data.isEmpty());
    QVERIFY(first.address != second.address);
    manager().write(Commands().freeBuffer(first.address).freeBuffer(second.address));
}

void DriverCallTest::aCallToTheAbsentContextManagerIsDead()
{
    Party caller(device());
    Party watcher(device());
    watcher.write(Commands().acquire(0).requestDeath(0, 1));
    killManager();
    watcher.readUntil("BR_DEAD_BINDER");

    caller.write(Commands().call(0, 1));

    QCOMPARE(caller.read().names(), QStringList{QStringLiteral("BR_DEAD_REPLY")});
    startManager();
}

void DriverCallTest::aCallToAnUnknownHandleFails()
{
    expectMisuse("BC_TRANSACTION to a handle without a strong reference");
    Party caller(device());

    caller.write(Commands().call(77, 1));

    QCOMPARE(caller.read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverCallTest::theContextManagerCannotCallHandle0()
{
    expectMisuse("the context manager's process calls handle 0");
    manager().write(Commands().call(0, 1));
    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverCallTest::aReplyWithNothingToAnswerFails()
{
    expectMisuse("BC_REPLY with no call to answer");
    Party party(device());

    party.write(Commands().reply());

    QCOMPARE(party.read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverCallTest::aFailedCallStopsTheWriteUntilItIsRead()
{
    expectMisuse("BC_TRANSACTION to a handle without a strong reference");
    Party party(device());
    const Commands failing = Commands().call(77, 1);
    Commands commands = failing;
    commands.acquire(0).release(0);

    const Outcome written = party.exchange(commands, 0);
    QCOMPARE(written.result, 0);
    QCOMPARE(written.writeConsumed, quint64(failing.bytes().size()));
    const Outcome stuck = party.exchange(Commands().acquire(0), 0);
    QCOMPARE(stuck.result, 0);
    QCOMPARE(stuck.writeConsumed, quint64(0));

    QCOMPARE(party.readNow().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
    party.write(Commands().acquire(0).release(0));
}

void DriverCallTest::aFailedReplyStopsTheWriteUntilItIsRead()
{
    expectMisuse("a message with a handle that it does not have");
    Party caller(device());
    const quint32 handle = handOver(caller, 5, manager());
    caller.write(Commands().call(0, 1));
    const Return call = manager().readUntil("BR_TRANSACTION").last();
    const Commands failing = Commands().freeBuffer(call.address).reply(Message().handle(77));
    Commands commands = failing;
    commands.release(handle);

    const Outcome written = manager().exchange(commands, 0);

    QCOMPARE(written.result, 0);
    QCOMPARE(written.writeConsumed, quint64(failing.bytes().size()));
    QCOMPARE(manager().readNow().names(), QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    manager().write(Commands().release(handle));
    caller.readUntil("BR_FAILED_REPLY");
}

void DriverCallTest::aReadEndsAfterOneCall()
{
    Party first(device());
    Party second(device());
    first.write(Commands().oneWay(0, 1));
    second.write(Commands().call(0, 2));

    const Outcome outcome = manager().read();

    QCOMPARE(outcome.names(), QStringList{QStringLiteral("BR_TRANSACTION")});
    const Outcome next = manager().read();
    QCOMPARE(next.names(), QStringList{QStringLiteral("BR_TRANSACTION")});
    manager().write(Commands().freeBuffer(outcome.last().address).freeBuffer(next.last().address));
}

void DriverCallTest::aSecondCallWhileWaitingFails()
{
    expectMisuse("BC_TRANSACTION while waiting for a reply");
    Party caller(device());
    caller.write(Commands().call(0, 1));

    caller.write(Commands().call(0, 2));

    QVERIFY(
        caller.readUntil("BR_FAILED_REPLY").names().contains(QStringLiteral("BR_FAILED_REPLY")));
    // The first is not touched by that.
    QCOMPARE(manager().serve().callCode, 1u);
    caller.write(Commands().freeBuffer(caller.readUntil("BR_REPLY").last().address));
}

void DriverCallTest::unrelatedCallsWaitUntilTheThreadIsIdle()
{
    Party party(device());
    Party stranger(device());
    const quint32 handle = handOver(party, 1, stranger);
    party.write(Commands().call(0, 1));

    stranger.write(Commands().call(handle, 2));

    QVERIFY(!party.isReadable());
    manager().serve();
    const Outcome reply = party.readUntil("BR_REPLY");
    QVERIFY(!reply.names().contains(QStringLiteral("BR_TRANSACTION")));
    party.write(Commands().freeBuffer(reply.last().address));
    QCOMPARE(party.serve().callCode, 2u);
    stranger.write(Commands().freeBuffer(stranger.readUntil("BR_REPLY").last().address));
}

void DriverCallTest::unrelatedCallsWaitWhileOneIsServed()
{
    Party first(device());
    Party second(device());
    first.write(Commands().call(0, 1));
    const Return served = manager().read().last();

    second.write(Commands().call(0, 2));

    QVERIFY(!manager().isReadable());
    manager().write(Commands().freeBuffer(served.address).reply());
    const Outcome next = manager().readUntil("BR_TRANSACTION");
    QCOMPARE(next.last().callCode, 2u);
    manager().write(Commands().freeBuffer(next.last().address).reply());
    first.write(Commands().freeBuffer(first.readUntil("BR_REPLY").last().address));
    second.write(Commands().freeBuffer(second.readUntil("BR_REPLY").last().address));
}

void DriverCallTest::aCallBackIsDeliveredInsideTheCall()
{
    Party party(device());
    party.write(Commands().call(0, 1, Message().ownObject(5)));
    const Return outer = manager().readUntil("BR_TRANSACTION").last();
    const auto handle = static_cast<quint32>(outer.objectNumber());

    manager().write(Commands().call(handle, 2));

    const Outcome nested = party.readUntil("BR_TRANSACTION");
    party.answerAnnouncements(nested);
    QCOMPARE(
        nested.names(),
        (QStringList{QStringLiteral("BR_INCREFS"), QStringLiteral("BR_ACQUIRE"),
                     QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_TRANSACTION")}));
    QCOMPARE(nested.last().callCode, 2u);
    QCOMPARE(nested.last().id, quint64(5));
    party.write(Commands().freeBuffer(nested.last().address).reply(QByteArray("inner")));
    const Return inner = manager().readUntil("BR_REPLY").last();
    QCOMPARE(inner.data, QByteArray("inner"));
    manager().write(
        Commands().freeBuffer(inner.address).freeBuffer(outer.address).reply(QByteArray("outer")));
    const Return reply = party.readUntil("BR_REPLY").last();
    QCOMPARE(reply.data, QByteArray("outer"));
    party.write(Commands().freeBuffer(reply.address));
}

void DriverCallTest::aCallBackThroughOthersIsDeliveredInsideTheCall()
{
    Party party(device());
    Party between(device());
    const quint32 back = handOver(party, 5, between);
    const quint32 onward = handOver(between, 6, manager());
    party.write(Commands().call(0, 1));
    const Return outer = manager().readUntil("BR_TRANSACTION").last();
    manager().write(Commands().call(onward, 2));
    const Return middle = between.readUntil("BR_TRANSACTION").last();

    between.write(Commands().call(back, 3));

    const Return inner = party.readUntil("BR_TRANSACTION").last();
    QCOMPARE(inner.callCode, 3u);
    party.write(Commands().freeBuffer(inner.address).reply());
    between.write(Commands().freeBuffer(between.readUntil("BR_REPLY").last().address));
    between.write(Commands().freeBuffer(middle.address).reply());
    manager().write(Commands().freeBuffer(manager().readUntil("BR_REPLY").last().address));
    manager().write(Commands().freeBuffer(outer.address).reply());
    party.write(Commands().freeBuffer(party.readUntil("BR_REPLY").last().address));
}

void DriverCallTest::aReplyAnswersTheInnermostCall()
{
    Party party(device());
    const quint32 back = handOver(party, 5, manager());
    party.write(Commands().call(0, 1));
    const Return first = manager().readUntil("BR_TRANSACTION").last();
    manager().write(Commands().call(back, 2));
    const Return second = party.readUntil("BR_TRANSACTION").last();
    party.write(Commands().call(0, 3));
    const Return third = manager().readUntil("BR_TRANSACTION").last();
    QCOMPARE(third.callCode, 3u);

    manager().write(Commands().freeBuffer(third.address).reply(QByteArray("third")));
    const Return toThird = party.readUntil("BR_REPLY").last();
    party.write(
        Commands().freeBuffer(toThird.address).freeBuffer(second.address).reply(QByteArray("2nd")));
    const Return toSecond = manager().readUntil("BR_REPLY").last();
    manager().write(
        Commands().freeBuffer(toSecond.address).freeBuffer(first.address).reply(QByteArray("1st")));
    const Return toFirst = party.readUntil("BR_REPLY").last();
    party.write(Commands().freeBuffer(toFirst.address));

    QCOMPARE(toThird.data, QByteArray("third"));
    QCOMPARE(toSecond.data, QByteArray("2nd"));
    QCOMPARE(toFirst.data, QByteArray("1st"));
}

void DriverCallTest::callsCanBeMadeWhileOneIsServed()
{
    Party service(device());
    Party caller(device());
    const quint32 handle = handOver(service, 1, caller);
    caller.write(Commands().call(handle, 1));
    const Return served = service.read().last();

    service.write(Commands().call(0, 2));
    QCOMPARE(manager().serve().callCode, 2u);
    service.write(Commands().freeBuffer(service.readUntil("BR_REPLY").last().address));
    service.write(Commands().freeBuffer(served.address).reply(QByteArray("done")));

    const Return reply = caller.readUntil("BR_REPLY").last();
    QCOMPARE(reply.data, QByteArray("done"));
    caller.write(Commands().freeBuffer(reply.address));
}

void DriverCallTest::aCalleeThatDiesBeforeReadingMakesTheCallDead()
{
    Party caller(device());
    Party callee(device());
    const quint32 handle = handOver(callee, 1, caller);
    caller.write(Commands().call(handle, 1));

    callee.kill();

    QCOMPARE(
        caller.readUntil("BR_DEAD_REPLY").names(),
        (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_DEAD_REPLY")}));
    caller.write(Commands().call(handle, 2));
    QCOMPARE(caller.read().names(), QStringList{QStringLiteral("BR_DEAD_REPLY")});
}

void DriverCallTest::aCalleeThatDiesWhileServingMakesTheCallDead()
{
    Party caller(device());
    Party callee(device());
    const quint32 handle = handOver(callee, 1, caller);
    caller.write(Commands().call(handle, 1));
    callee.readUntil("BR_TRANSACTION");

    callee.kill();

    QCOMPARE(
        caller.readUntil("BR_DEAD_REPLY").names(),
        (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_DEAD_REPLY")}));
}

void DriverCallTest::aCalleeThatDiesInsideACallOfItsOwnIsMissedWhenThatEnds()
{
    Party caller(device());
    Party between(device());
    const quint32 handle = handOver(between, 1, caller);
    caller.write(Commands().call(handle, 1));
    between.readUntil("BR_TRANSACTION");
    between.write(Commands().call(0, 2));
    const Return inner = manager().readUntil("BR_TRANSACTION").last();

    between.kill();
    manager().write(Commands().freeBuffer(inner.address));
    // The reply finds nobody: that is when the caller's reply is known to be lost.
    manager().exchange(Commands().reply(), 0);

    QCOMPARE(manager().readUntil("BR_TRANSACTION_COMPLETE").names(),
             QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    caller.readUntil("BR_DEAD_REPLY");
}

void DriverCallTest::aReplyToADeadCallerIsDropped()
{
    auto caller = std::make_unique<Party>(device());
    caller->write(Commands().call(0, 1));
    const Return call = manager().readUntil("BR_TRANSACTION").last();
    caller->kill();

    manager().write(Commands().freeBuffer(call.address).reply(QByteArray("too late")));

    QCOMPARE(manager().readUntil("BR_TRANSACTION_COMPLETE").names(),
             QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    QVERIFY(!manager().isReadable());
}

void DriverCallTest::theRequestCanBeFreedBeforeTheReply()
{
    Party caller(device());
    caller.write(Commands().call(0, 1, QByteArray("request")));
    const Return call = manager().read().last();
    manager().write(Commands().freeBuffer(call.address));

    manager().write(Commands().reply(QByteArray("reply")));

    const Return reply = caller.readUntil("BR_REPLY").last();
    QCOMPARE(reply.data, QByteArray("reply"));
    caller.write(Commands().freeBuffer(reply.address));
}
