#include "sim/driveronewaytest.h"

#include <QtTest>

namespace {

const QStringList Complete = {QStringLiteral("BR_TRANSACTION_COMPLETE")};

} // namespace

void DriverOneWayTest::aOneWayCallIsCompleteOnceItIsTaken()
{
    Party caller(device());

    caller.write(Commands().oneWay(0, 1, QByteArray("data")));

    QCOMPARE(caller.read().names(), Complete);
    const Return call = manager().read().last();
    QCOMPARE(call.flags, quint32(TF_ONE_WAY));
    QCOMPARE(call.data, QByteArray("data"));
    manager().write(Commands().freeBuffer(call.address));
    QVERIFY(!caller.isReadable());
}

void DriverOneWayTest::theSenderOfAOneWayCallIsNotTold()
{
    Party caller(device());
    caller.write(Commands().oneWay(0, 1));
    const Return call = manager().read().last();
    QCOMPARE(call.senderPid, 0);
    manager().write(Commands().freeBuffer(call.address));
}

void DriverOneWayTest::oneAtATimeIsDeliveredPerObject()
{
    Party caller(device());
    caller.write(Commands().oneWay(0, 1).oneWay(0, 2));
    const Return first = manager().read().last();
    QVERIFY(!manager().isReadable());

    manager().write(Commands().freeBuffer(first.address));

    QVERIFY(manager().isReadable());
    const Return second = manager().read().last();
    QCOMPARE(second.callCode, 2u);
    manager().write(Commands().freeBuffer(second.address));
    QVERIFY(!manager().isReadable());
}

void DriverOneWayTest::theirOrderIsKept()
{
    Party caller(device());
    Commands calls;
    for (quint32 code = 1; code <= 20; ++code)
        calls.oneWay(0, code);
    caller.write(calls);

    for (quint32 code = 1; code <= 20; ++code) {
        const Return call = manager().read().last();
        QCOMPARE(call.callCode, code);
        manager().write(Commands().freeBuffer(call.address));
    }
}

void DriverOneWayTest::objectsDoNotWaitForEachOther()
{
    Party owner(device());
    Party caller(device());
    const quint32 first = handOver(owner, 1, caller);
    const quint32 second = handOver(owner, 2, caller);
    caller.write(Commands().oneWay(first, 1).oneWay(second, 2));

    const Return toFirst = owner.read().last();
    const Return toSecond = owner.read().last();

    QCOMPARE(toFirst.id, quint64(1));
    QCOMPARE(toSecond.id, quint64(2));
    owner.write(Commands().freeBuffer(toFirst.address).freeBuffer(toSecond.address));
}

void DriverOneWayTest::theyWaitUntilTheCalleeIsIdle()
{
    Party party(device());
    const quint32 handle = handOver(party, 1, manager());
    party.write(Commands().call(0, 1));
    const Return call = manager().readUntil("BR_TRANSACTION").last();

    manager().write(Commands().oneWay(handle, 2));

    // Not even from the very thread that serves the call.
    QVERIFY(!party.isReadable());
    manager().write(Commands().freeBuffer(call.address).reply());
    party.write(Commands().freeBuffer(party.readUntil("BR_REPLY").last().address));
    const Return oneWay = party.readUntil("BR_TRANSACTION").last();
    QCOMPARE(oneWay.callCode, 2u);
    party.write(Commands().freeBuffer(oneWay.address));
}

void DriverOneWayTest::twoWayCallsOvertakeWaitingOneWayCalls()
{
    Party caller(device());
    caller.write(Commands().oneWay(0, 1).oneWay(0, 2).call(0, 3));
    const Return first = manager().read().last();
    QCOMPARE(first.callCode, 1u);

    const Return overtaking = manager().read().last();

    QCOMPARE(overtaking.callCode, 3u);
    manager().write(Commands().freeBuffer(overtaking.address).reply());
    manager().write(Commands().freeBuffer(first.address));
    const Return second = manager().readUntil("BR_TRANSACTION").last();
    QCOMPARE(second.callCode, 2u);
    manager().write(Commands().freeBuffer(second.address));
    caller.write(Commands().freeBuffer(caller.readUntil("BR_REPLY").last().address));
}

void DriverOneWayTest::theyMayTakeHalfOfTheMapping()
{
    Party caller(device());
    const int third = int(Party::UsualMapping / 3);
    const QByteArray data(third, 'x');

    caller.write(Commands().oneWay(0, 1, data));
    QCOMPARE(caller.read().names(), Complete);
    caller.exchange(Commands().oneWay(0, 2, data), 0);
    QCOMPARE(caller.read().names(), Failed);

    // There is room for two-way calls still.
    caller.write(Commands().call(0, 3, data));
    const Return oneWay = manager().read().last();
    QCOMPARE(oneWay.data.size(), third);
    manager().write(Commands().freeBuffer(oneWay.address));
    QCOMPARE(manager().serve().data.size(), third);
    caller.write(Commands().freeBuffer(caller.readUntil("BR_REPLY").last().address));
}

void DriverOneWayTest::freeingThemMakesRoom()
{
    Party caller(device());
    const QByteArray data(int(Party::UsualMapping / 2 - 4096), 'x');
    for (int i = 0; i < 5; ++i) {
        caller.write(Commands().oneWay(0, 1, data));
        QCOMPARE(caller.read().names(), Complete);
        manager().write(Commands().freeBuffer(manager().read().last().address));
    }
}

void DriverOneWayTest::aOneWayCallToADeadObjectIsDead()
{
    Party caller(device());
    Party callee(device());
    const quint32 handle = handOver(callee, 1, caller);
    caller.write(Commands().requestDeath(handle, 1));
    callee.kill();
    caller.readUntil("BR_DEAD_BINDER");
    caller.write(Commands().deadDone(1));

    caller.write(Commands().oneWay(handle, 1));

    QCOMPARE(caller.read().names(), QStringList{QStringLiteral("BR_DEAD_REPLY")});
}
