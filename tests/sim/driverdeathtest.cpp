#include "sim/driverdeathtest.h"

#include <QtTest>

namespace {

constexpr quint64 Cookie = 0x2a;
const QStringList Dead = {QStringLiteral("BR_DEAD_BINDER")};
const QStringList Cleared = {QStringLiteral("BR_CLEAR_DEATH_NOTIFICATION_DONE")};

} // namespace

void DriverDeathTest::aCrashIsTold()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    QVERIFY(!manager().isReadable());

    owner.kill();

    const Outcome outcome = manager().readUntil("BR_DEAD_BINDER");
    QCOMPARE(outcome.allNames(),
             (QStringList{QStringLiteral("BR_NOOP"), QStringLiteral("BR_DEAD_BINDER")}));
    QCOMPARE(outcome.last().cookie, Cookie);
    manager().write(Commands().deadDone(Cookie));
    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::aClosedFileIsADeath()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));

    owner.close();

    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").names(), Dead);
    manager().write(Commands().deadDone(Cookie));
}

void DriverDeathTest::eachDeathEndsItsRead()
{
    Party owner(device());
    const quint32 first = handOver(owner, 5, manager());
    const quint32 second = handOver(owner, 6, manager());
    manager().write(Commands().requestDeath(first, 1).requestDeath(second, 2));

    owner.kill();

    const Outcome one = manager().read();
    const Outcome two = manager().read();
    QCOMPARE(one.names(), Dead);
    QCOMPARE(two.names(), Dead);
    QCOMPARE(one.last().cookie + two.last().cookie, quint64(3));
    manager().write(Commands().deadDone(1).deadDone(2));
}

void DriverDeathTest::everyoneWhoAskedIsTold()
{
    Party owner(device());
    Party other(device());
    const quint32 others = handOver(owner, 5, other);
    const quint32 managers = handOver(owner, 5, manager());
    other.write(Commands().requestDeath(others, 1));
    manager().write(Commands().requestDeath(managers, 2));

    owner.kill();

    QCOMPARE(other.readUntil("BR_DEAD_BINDER").last().cookie, quint64(1));
    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").last().cookie, quint64(2));
    other.write(Commands().deadDone(1));
    manager().write(Commands().deadDone(2));
}

void DriverDeathTest::whoDidNotAskIsNotTold()
{
    Party owner(device());
    Party other(device());
    handOver(owner, 5, other);
    const quint32 managers = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(managers, Cookie));

    owner.kill();

    manager().readUntil("BR_DEAD_BINDER");
    QVERIFY(!other.isReadable());
    manager().write(Commands().deadDone(Cookie));
}

void DriverDeathTest::aDeadObjectIsToldAtOnce()
{
    Party owner(device());
    const quint32 first = handOver(owner, 5, manager());
    const quint32 second = handOver(owner, 6, manager());
    manager().write(Commands().requestDeath(first, 1));
    owner.kill();
    manager().readUntil("BR_DEAD_BINDER");
    manager().write(Commands().deadDone(1));

    manager().write(Commands().requestDeath(second, 2));

    QVERIFY(manager().isReadable());
    QCOMPARE(manager().readNow().last().cookie, quint64(2));
    manager().write(Commands().deadDone(2));
}

void DriverDeathTest::aWeakReferenceIsEnough()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().incRefs(handle).release(handle).requestDeath(handle, Cookie));

    owner.kill();

    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").last().cookie, Cookie);
    manager().write(Commands().deadDone(Cookie));
}

void DriverDeathTest::aSecondRequestIsDropped()
{
    expectMisuse("BC_REQUEST_DEATH_NOTIFICATION for a handle that has one");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());

    manager().write(Commands().requestDeath(handle, 1).requestDeath(handle, 2));

    owner.kill();
    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").last().cookie, quint64(1));
    manager().write(Commands().deadDone(1));
    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::aRequestWithoutAReferenceIsIgnored()
{
    expectMisuse("BC_REQUEST_DEATH_NOTIFICATION for a handle that it does not have");
    expectMisuse("BC_CLEAR_DEATH_NOTIFICATION for a handle that it does not have");
    Party party(device());
    party.write(Commands().requestDeath(0, Cookie).clearDeath(0, Cookie));
    QVERIFY(!party.isReadable());
}

void DriverDeathTest::whatIsClearedBeforeIsConfirmedAndNotTold()
{
    expectMisuse("BC_CLEAR_DEATH_NOTIFICATION for a handle that has none");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));

    manager().write(Commands().clearDeath(handle, Cookie));

    const Outcome outcome = manager().read();
    QCOMPARE(outcome.names(), Cleared);
    QCOMPARE(outcome.last().cookie, Cookie);
    manager().write(Commands().clearDeath(handle, Cookie));
    owner.kill();
    Party other(device());
    handOver(other, 6, manager());
    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::whatIsClearedWithAnotherCookieStays()
{
    expectMisuse("BC_CLEAR_DEATH_NOTIFICATION with another cookie");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));

    manager().write(Commands().clearDeath(handle, Cookie + 1));

    QVERIFY(!manager().isReadable());
    owner.kill();
    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").last().cookie, Cookie);
    manager().write(Commands().deadDone(Cookie));
}

void DriverDeathTest::whatIsClearedAfterTheDeathWasQueuedIsStillTold()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    owner.kill();
    QTRY_VERIFY(manager().isReadable());

    manager().write(Commands().clearDeath(handle, Cookie));

    QCOMPARE(manager().read().names(), Dead);
    QVERIFY(!manager().isReadable());
    manager().write(Commands().deadDone(Cookie));
    const Outcome outcome = manager().read();
    QCOMPARE(outcome.names(), Cleared);
    QCOMPARE(outcome.last().cookie, Cookie);
}

void DriverDeathTest::whatIsClearedAfterTheDeathWasReadIsConfirmedAfterTheAnswer()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    owner.kill();
    manager().readUntil("BR_DEAD_BINDER");

    manager().write(Commands().clearDeath(handle, Cookie));
    QVERIFY(!manager().isReadable());

    manager().write(Commands().deadDone(Cookie));
    QCOMPARE(manager().read().names(), Cleared);
}

void DriverDeathTest::whatIsClearedAfterTheAnswerIsConfirmed()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    owner.kill();
    manager().readUntil("BR_DEAD_BINDER");
    manager().write(Commands().deadDone(Cookie));

    manager().write(Commands().clearDeath(handle, Cookie));

    QCOMPARE(manager().read().names(), Cleared);
}

void DriverDeathTest::afterClearingANewRequestIsTaken()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, 1).clearDeath(handle, 1));
    QCOMPARE(manager().read().names(), Cleared);

    manager().write(Commands().requestDeath(handle, 2));

    owner.kill();
    QCOMPARE(manager().readUntil("BR_DEAD_BINDER").last().cookie, quint64(2));
    manager().write(Commands().deadDone(2));
}

void DriverDeathTest::deathsWaitUntilTheThreadIsIdle()
{
    Party owner(device());
    Party party(device());
    Party witness(device());
    const quint32 handle = handOver(owner, 5, party);
    const quint32 witnesses = handOver(owner, 5, witness);
    party.write(Commands().requestDeath(handle, 1));
    witness.write(Commands().requestDeath(witnesses, 2));
    party.write(Commands().call(0, 1));

    owner.kill();
    witness.readUntil("BR_DEAD_BINDER");
    witness.write(Commands().deadDone(2));

    QVERIFY(!party.isReadable());
    manager().serve();
    const Outcome reply = party.readUntil("BR_REPLY");
    QCOMPARE(reply.names(),
             (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_REPLY")}));
    party.write(Commands().freeBuffer(reply.last().address));
    QCOMPARE(party.readUntil("BR_DEAD_BINDER").last().cookie, quint64(1));
    party.write(Commands().deadDone(1));
}

void DriverDeathTest::aConfirmationComesInsideACall()
{
    Party owner(device());
    Party party(device());
    const quint32 handle = handOver(owner, 5, party);
    party.write(Commands().requestDeath(handle, Cookie).call(0, 1));

    party.write(Commands().clearDeath(handle, Cookie));

    QVERIFY(party.readUntil("BR_CLEAR_DEATH_NOTIFICATION_DONE").last().cookie == Cookie);
    manager().serve();
    party.write(Commands().freeBuffer(party.readUntil("BR_REPLY").last().address));
}

void DriverDeathTest::theLastReleaseDropsTheRequest()
{
    Party owner(device());
    Party witness(device());
    const quint32 handle = handOver(owner, 5, manager());
    const quint32 witnesses = handOver(owner, 5, witness);
    manager().write(Commands().requestDeath(handle, 1).release(handle));
    witness.write(Commands().requestDeath(witnesses, 2));

    owner.kill();

    witness.readUntil("BR_DEAD_BINDER");
    witness.write(Commands().deadDone(2));
    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::theLastReleaseDropsADeathThatIsQueued()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    owner.kill();
    QTRY_VERIFY(manager().isReadable());

    manager().write(Commands().release(handle));

    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::anAnswerForAForgottenCookieIsFine()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    manager().write(Commands().requestDeath(handle, Cookie));
    owner.kill();
    manager().readUntil("BR_DEAD_BINDER");

    manager().write(Commands().release(handle).deadDone(Cookie));

    QVERIFY(!manager().isReadable());
}

void DriverDeathTest::anAnswerThatNobodyAskedForIsIgnored()
{
    expectMisuse("BC_DEAD_BINDER_DONE with a cookie that was not delivered");
    Party party(device());
    party.write(Commands().deadDone(Cookie));
    QVERIFY(!party.isReadable());
}

void DriverDeathTest::theContextManagerCanBeWatched()
{
    Party party(device());
    party.write(Commands().acquire(0).requestDeath(0, Cookie));

    killManager();

    QCOMPARE(party.readUntil("BR_DEAD_BINDER").last().cookie, Cookie);
    // As Android does it: take everything back, then begin anew with the next one.
    party.write(Commands().clearDeath(0, Cookie).deadDone(Cookie));
    QCOMPARE(party.read().names(), Cleared);
    party.write(Commands().release(0));
    startManager();
    party.write(Commands().acquire(0).requestDeath(0, Cookie));
    killManager();
    QCOMPARE(party.readUntil("BR_DEAD_BINDER").last().cookie, Cookie);
    startManager();
}
