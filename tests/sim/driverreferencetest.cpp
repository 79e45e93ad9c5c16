#include "sim/driverreferencetest.h"

#include <QtTest>

#include <cerrno>

namespace {

const QStringList Gone = {QStringLiteral("BR_RELEASE"), QStringLiteral("BR_DECREFS")};

// What a one-way call with the sender's object 5 leaves with the sender: its announcement,
// answered, and the completion.
void sendObject5(Party &owner)
{
    owner.write(Commands().oneWay(0, 1, Message().ownObject(5)));
    owner.answerAnnouncements(owner.readUntil("BR_TRANSACTION_COMPLETE"));
}

// A changed count can make the descriptor readable and then come to nothing.
bool isQuiet(Party &party)
{
    return !party.isReadable() || party.readNow().names().isEmpty();
}

} // namespace

void DriverReferenceTest::aBufferHoldsItsHandles()
{
    expectMisuse("BC_TRANSACTION to a handle without a strong reference");
    Party owner(device());
    sendObject5(owner);
    const Return received = manager().read().last();
    const auto handle = static_cast<quint32>(received.objectNumber());
    manager().write(Commands().oneWay(handle, 2));
    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    owner.write(Commands().freeBuffer(owner.readUntil("BR_TRANSACTION").last().address));
    QVERIFY(!owner.isReadable());

    manager().write(Commands().freeBuffer(received.address));

    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
    manager().write(Commands().call(handle, 3));
    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverReferenceTest::anAcquiredHandleOutlivesItsBuffer()
{
    Party owner(device());
    sendObject5(owner);
    const Return received = manager().read().last();
    const auto handle = static_cast<quint32>(received.objectNumber());

    // In this order, and in one write.
    manager().write(Commands().acquire(handle).freeBuffer(received.address));

    QVERIFY(!owner.isReadable());
    callAndServe(manager(), handle, owner);
}

void DriverReferenceTest::theOwnerIsToldWhenTheLastReferenceGoes()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());

    manager().write(Commands().release(handle));

    const Outcome outcome = owner.readUntil("BR_DECREFS");
    QCOMPARE(outcome.names(), Gone);
    QCOMPARE(outcome.first("BR_RELEASE").id, quint64(5));
    QCOMPARE(outcome.first("BR_RELEASE").cookie, Message::cookieOf(5));
    QCOMPARE(outcome.first("BR_DECREFS").id, quint64(5));
}

void DriverReferenceTest::aWeakReferenceKeepsTheObjectKnown()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().incRefs(handle));

    manager().write(Commands().release(handle));
    QCOMPARE(owner.readUntil("BR_RELEASE").names(), QStringList{QStringLiteral("BR_RELEASE")});
    QVERIFY(!owner.isReadable());

    manager().write(Commands().decRefs(handle));
    QCOMPARE(owner.readUntil("BR_DECREFS").names(), QStringList{QStringLiteral("BR_DECREFS")});
}

void DriverReferenceTest::everyReferenceCounts()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().acquire(handle).acquire(handle));

    manager().write(Commands().release(handle).release(handle));
    QVERIFY(!owner.isReadable());

    manager().write(Commands().release(handle));
    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
}

void DriverReferenceTest::aReleaseWaitsForTheAnswerToTheAcquire()
{
    Party owner(device());
    owner.write(Commands().oneWay(0, 1, Message().ownObject(5)));
    owner.readUntil("BR_TRANSACTION_COMPLETE");
    manager().write(Commands().freeBuffer(manager().read().last().address));
    QVERIFY(!owner.isReadable());

    owner.write(Commands().incRefsDone(5).acquireDone(5));

    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
}

void DriverReferenceTest::aReleaseWaitsUntilTheOwnerIsIdle()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    owner.write(Commands().call(0, 1));

    manager().write(Commands().release(handle));

    QVERIFY(!owner.isReadable());
    manager().serve();
    const Outcome reply = owner.readUntil("BR_REPLY");
    QCOMPARE(reply.names(),
             (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_REPLY")}));
    owner.write(Commands().freeBuffer(reply.last().address));
    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
}

void DriverReferenceTest::changesThatCancelOutSayNothing()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().incRefs(handle));

    manager().write(Commands().release(handle));
    owner.write(Commands().oneWay(0, 1, Message().ownObject(5)));

    QCOMPARE(owner.readUntil("BR_TRANSACTION_COMPLETE").names(),
             QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    QCOMPARE(owner.readNow().names(), QStringList());
    manager().write(Commands().freeBuffer(manager().read().last().address));
    QCOMPARE(owner.readUntil("BR_RELEASE").names(), QStringList{QStringLiteral("BR_RELEASE")});
}

void DriverReferenceTest::aCallHoldsItsTargetUntilItIsFreed()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().oneWay(handle, 1));

    manager().write(Commands().release(handle));

    const Outcome call = owner.readUntil("BR_TRANSACTION");
    QCOMPARE(call.names(), QStringList{QStringLiteral("BR_TRANSACTION")});
    QVERIFY(isQuiet(owner));
    owner.write(Commands().freeBuffer(call.last().address));
    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
}

void DriverReferenceTest::anObjectIsAnnouncedAnewAfterItWasForgotten()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().release(handle));
    owner.readUntil("BR_DECREFS");

    owner.write(Commands().oneWay(0, 1, Message().ownObject(5)));

    const Outcome outcome = owner.readUntil("BR_TRANSACTION_COMPLETE");
    QCOMPARE(outcome.names(),
             (QStringList{QStringLiteral("BR_INCREFS"), QStringLiteral("BR_ACQUIRE"),
                          QStringLiteral("BR_TRANSACTION_COMPLETE")}));
    owner.answerAnnouncements(outcome);
    manager().write(Commands().freeBuffer(manager().read().last().address));
}

void DriverReferenceTest::anObjectThatComesHomeIsHeldByItsBuffer()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    owner.write(Commands().call(0, 1));
    manager().serve(Message().handle(handle));
    const Return reply = owner.readUntil("BR_REPLY").last();

    manager().write(Commands().release(handle));

    QVERIFY(isQuiet(owner));
    owner.write(Commands().freeBuffer(reply.address));
    QVERIFY(owner.readUntil("BR_DECREFS").names().contains(QStringLiteral("BR_RELEASE")));
}

void DriverReferenceTest::aReferenceReleasedTooOftenIsIgnored()
{
    expectMisuse("a reference is released more often than it was added");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());

    manager().write(Commands().decRefs(handle));

    callAndServe(manager(), handle, owner);
}

void DriverReferenceTest::anUnknownHandleIsIgnored()
{
    expectMisuse("a reference is added to a handle that it does not have");
    expectMisuse("a reference is released on a handle that it does not have");
    Party party(device());
    party.write(Commands().acquire(77).release(77));
    QVERIFY(!party.isReadable());
}

void DriverReferenceTest::anAnswerThatIsNotDueIsIgnored()
{
    expectMisuse("BC_INCREFS_DONE or BC_ACQUIRE_DONE that is not due");
    expectMisuse("BC_INCREFS_DONE or BC_ACQUIRE_DONE for an unknown object");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());

    owner.write(Commands().acquireDone(5).acquireDone(6));

    QVERIFY(!owner.isReadable());
    callAndServe(manager(), handle, owner);
}

void DriverReferenceTest::whatIsFreedTwiceIsIgnored()
{
    expectMisuse("BC_FREE_BUFFER of what is no received message");
    Party caller(device());
    caller.write(Commands().oneWay(0, 1).oneWay(0, 2).oneWay(0, 3));
    const Return first = manager().read().last();
    manager().write(Commands().freeBuffer(first.address));
    const Return second = manager().read().last();

    manager().write(Commands().freeBuffer(first.address));

    // The call after is not let through by that.
    QCOMPARE(second.callCode, 2u);
    QVERIFY(!manager().isReadable());
    manager().write(Commands().freeBuffer(second.address));
    const Return third = manager().read().last();
    QCOMPARE(third.callCode, 3u);
    manager().write(Commands().freeBuffer(third.address));
}

void DriverReferenceTest::whatWasNeverReceivedCannotBeFreed()
{
    expectMisuse("BC_FREE_BUFFER of what is no received message");
    expectMisuse("BC_FREE_BUFFER of what is no received message");
    Party caller(device());
    caller.write(Commands().oneWay(0, 1, QByteArray(64, 'x')));
    const Return call = manager().read().last();

    manager().write(Commands().freeBuffer(0).freeBuffer(call.address + 8));

    manager().write(Commands().freeBuffer(call.address));
}

void DriverReferenceTest::whatIsNotReadYetCannotBeFreed()
{
    expectMisuse("BC_FREE_BUFFER of what is no received message");
    Party caller(device());
    caller.write(Commands().oneWay(0, 1, QByteArray("first")));
    const Return first = manager().read().last();
    manager().write(Commands().freeBuffer(first.address));
    caller.write(Commands().oneWay(0, 2, QByteArray("again")));

    // The place of the first message is the second one's now.
    manager().write(Commands().freeBuffer(first.address));

    const Return second = manager().read().last();
    QCOMPARE(second.address, first.address);
    QCOMPARE(second.data, QByteArray("again"));
    manager().write(Commands().freeBuffer(second.address));
}

void DriverReferenceTest::whatIsNotFreedBeforeClosingIsNoted()
{
    expectMisuse("closes with 2 received messages not freed");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    const quint32 other = handOver(owner, 6, manager());
    manager().write(Commands().oneWay(handle, 1).oneWay(other, 2).oneWay(other, 3));
    owner.readUntil("BR_TRANSACTION");
    owner.readUntil("BR_TRANSACTION");

    owner.close();
}

void DriverReferenceTest::handle0CanBeAcquired()
{
    Party party(device());
    Party receiver(device());
    const quint32 handle = handOver(receiver, 5, party);

    party.write(Commands().acquire(0));

    // Now it can be handed on, and arrives where the context manager's own handle is not known.
    party.write(Commands().oneWay(handle, 1, Message().handle(0)));
    const Return call = receiver.readUntil("BR_TRANSACTION").last();
    QCOMPARE(call.objectType(), quint32(BINDER_TYPE_HANDLE));
    QCOMPARE(call.objectNumber(), quint64(0));
    receiver.write(Commands().freeBuffer(call.address));
    party.write(Commands().release(0));
}

void DriverReferenceTest::theContextManagerCannotAcquireHandle0()
{
    expectMisuse("the context manager holds handle 0");
    const Outcome outcome = manager().exchange(Commands().acquire(0), 0);
    QCOMPARE(outcome.result, -EINVAL);
    QCOMPARE(outcome.writeConsumed, quint64(0));
}

void DriverReferenceTest::handle0IsNotAcquiredWithoutAContextManager()
{
    expectMisuse("BC_REQUEST_DEATH_NOTIFICATION for a handle that it does not have");
    Party watcher(device());
    watcher.write(Commands().acquire(0).requestDeath(0, 1));
    killManager();
    watcher.readUntil("BR_DEAD_BINDER");
    Party party(device());

    party.write(Commands().acquire(0).requestDeath(0, 2));

    QVERIFY(!party.isReadable());
    startManager();
}

void DriverReferenceTest::handle0AlwaysCallsTheCurrentContextManager()
{
    Party party(device());
    party.write(Commands().acquire(0));
    killManager();
    startManager();

    callAndServe(party, 0, manager());
}

void DriverReferenceTest::aNewContextManagerGetsNumber0OnlyWhenItIsFree()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    QCOMPARE(handle, 1u);
    Party party(device());
    party.write(Commands().acquire(0).requestDeath(0, 1));
    killManager();
    party.readUntil("BR_DEAD_BINDER");
    party.write(Commands().deadDone(1));
    startManager();

    // The dead reference has number 0 still, so the new one becomes 1.
    party.write(Commands().acquire(0));
    callAndServe(party, 1, manager());
    party.write(Commands().release(1));

    party.write(Commands().release(0));
    party.write(Commands().acquire(0).requestDeath(0, 2));
    killManager();
    QCOMPARE(party.readUntil("BR_DEAD_BINDER").last().cookie, quint64(2));
    startManager();
}

void DriverReferenceTest::aDeadHandleStaysUntilItIsReleased()
{
    Party owner(device());
    Party other(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, 1));
    owner.kill();
    manager().readUntil("BR_DEAD_BINDER");
    manager().write(Commands().deadDone(1));

    QCOMPARE(handOver(other, 6, manager()), handle + 1);
    manager().write(Commands().call(handle, 1));
    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_DEAD_REPLY")});

    manager().write(Commands().release(handle));
    QCOMPARE(handOver(other, 7, manager()), handle);
}

void DriverReferenceTest::theReferencesOfAClosedFileGo()
{
    Party owner(device());
    auto holder = std::make_unique<Party>(device());
    handOver(owner, 5, *holder);
    QVERIFY(!owner.isReadable());

    holder->close();

    QCOMPARE(owner.readUntil("BR_DECREFS").names(), Gone);
}
