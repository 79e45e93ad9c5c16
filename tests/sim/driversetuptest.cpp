#include "sim/driversetuptest.h"

#include <QtTest>

#include <cerrno>

void DriverSetupTest::aDeviceThatIsNotThereCannotBeOpened()
{
    Party party;
    QCOMPARE(party.open("/nonexistent/device"), -ENOENT);
}

void DriverSetupTest::theProtocolIsVersion8()
{
    Party party(device());
    QByteArray version(sizeof(binder_version), '\0');

    QCOMPARE(party.control(BINDER_VERSION, &version), 0);

    QCOMPARE(version, QByteArray("\x08\0\0\0", 4));
}

void DriverSetupTest::anUnknownControlIsRefused()
{
    Party party(device());
    QCOMPARE(party.control(_IOW('b', 99, quint32)), -EINVAL);
}

void DriverSetupTest::aDeviceIsMappedOnce()
{
    Party party(device());
    QCOMPARE(party.map(4096), -EBUSY);
}

void DriverSetupTest::thereIsOneContextManager()
{
    Party second(device());
    QCOMPARE(second.control(BINDER_SET_CONTEXT_MGR), -EBUSY);
    QByteArray object(sizeof(flat_binder_object), '\0');
    QCOMPARE(second.control(BINDER_SET_CONTEXT_MGR_EXT, &object), -EBUSY);
}

void DriverSetupTest::anotherCanFollowWhenTheContextManagerIsGone()
{
    Party client(device());
    killManager();

    startManager();

    client.write(Commands().call(0, 5));
    QCOMPARE(manager().serve().callCode, 5u);
    client.write(Commands().freeBuffer(client.readUntil("BR_REPLY").last().address));
}

void DriverSetupTest::aReadOfNothingFailsWithItsWriteHalfDone()
{
    Party party(device());
    const Commands commands = Commands().acquire(0);

    const Outcome outcome = party.exchange(commands, 256);

    QCOMPARE(outcome.result, -EAGAIN);
    QCOMPARE(outcome.writeConsumed, quint64(commands.bytes().size()));
    QVERIFY(outcome.returns.isEmpty());
    // Done: the reference can be given back without a complaint.
    party.write(Commands().release(0));
}

void DriverSetupTest::anUnknownCommandEndsTheWrite()
{
    expectMisuse("an unknown command");
    Party party(device());
    const Commands known = Commands().acquire(0);
    Commands commands = known;
    commands.add(_IOW('c', 99, quint32), quint32(0)).release(0);

    const Outcome outcome = party.exchange(commands, 256);

    QCOMPARE(outcome.result, -EINVAL);
    QCOMPARE(outcome.writeConsumed, quint64(known.bytes().size()));
}

void DriverSetupTest::theDescriptorStaysReadableUntilTheWorkIsRead()
{
    Party party(device());
    QVERIFY(!manager().isReadable());

    party.write(Commands().oneWay(0, 1));

    QVERIFY(manager().isReadable());
    QVERIFY(manager().isReadable());
    const Outcome outcome = manager().readNow();
    QCOMPARE(outcome.names(), QStringList{QStringLiteral("BR_TRANSACTION")});
    QVERIFY(!manager().isReadable());
    manager().write(Commands().freeBuffer(outcome.last().address));
}

void DriverSetupTest::aReadBufferThatIsTooSmallLosesNothing()
{
    Party party(device());
    party.write(Commands().oneWay(0, 1));

    const Outcome small = manager().exchange(Commands(), 79);

    QCOMPARE(small.result, 0);
    QCOMPARE(small.allNames(), QStringList{QStringLiteral("BR_NOOP")});
    const Outcome large = manager().exchange(Commands(), 80);
    QCOMPARE(large.allNames(),
             (QStringList{QStringLiteral("BR_NOOP"), QStringLiteral("BR_TRANSACTION")}));
    manager().write(Commands().freeBuffer(large.last().address));
}

void DriverSetupTest::aWriteThatOnlyWritesDoesNotRead()
{
    Party party(device());

    const Outcome outcome = party.exchange(Commands().oneWay(0, 1), 0);

    QCOMPARE(outcome.result, 0);
    QVERIFY(outcome.returns.isEmpty());
    QCOMPARE(party.readNow().names(), QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
}
