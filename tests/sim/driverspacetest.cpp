#include "sim/driverspacetest.h"

#include <QtTest>

namespace {

constexpr int Mapping = int(Party::UsualMapping);

QByteArray bytes(int size)
{
    QByteArray data(size, Qt::Uninitialized);
    char *const start = data.data();
    for (int i = 0; i < size; ++i)
        start[i] = static_cast<char>(i * 7 + i / 251);
    return data;
}

} // namespace

void DriverSpaceTest::aMessageCanFillTheMapping()
{
    Party caller(device());
    const QByteArray data = bytes(Mapping);

    caller.write(Commands().call(0, 1, data));
    const Return call = manager().read().last();
    QCOMPARE(call.data, data);
    manager().write(Commands().freeBuffer(call.address).reply(data));

    const Return reply = caller.readUntil("BR_REPLY").last();
    QCOMPARE(reply.data, data);
    caller.write(Commands().freeBuffer(reply.address));
}

void DriverSpaceTest::aMessageThatIsTooLargeFailsWithoutACompletion()
{
    Party caller(device());
    caller.exchange(Commands().call(0, 1, bytes(Mapping + 1)), 0);
    QCOMPARE(caller.readUntil("BR_FAILED_REPLY").names(), Failed);
    QVERIFY(!manager().isReadable());
}

void DriverSpaceTest::offsetsTakeRoomToo()
{
    Party caller(device());
    Message message = Message().ownObject(1);
    message.data.append(bytes(Mapping - message.data.size()));

    caller.exchange(Commands().call(0, 1, message), 0);
    QCOMPARE(caller.readUntil("BR_FAILED_REPLY").names(), Failed);

    message.data.chop(8);
    caller.write(Commands().call(0, 1, message));
    const Return call = manager().serve();
    QCOMPARE(call.data.size(), Mapping - 8);
    const Outcome outcome = caller.readUntil("BR_REPLY");
    caller.answerAnnouncements(outcome);
    caller.write(Commands().freeBuffer(outcome.last().address));
}

void DriverSpaceTest::messagesThatAreNotFreedTakeRoom()
{
    Party first(device());
    Party second(device());
    first.write(Commands().call(0, 1, bytes(Mapping / 2)));
    const Return call = manager().read().last();

    second.exchange(Commands().call(0, 2, bytes(Mapping / 2 + 8)), 0);
    QCOMPARE(second.readUntil("BR_FAILED_REPLY").names(), Failed);
    second.write(Commands().call(0, 3, bytes(Mapping / 2)));

    manager().write(Commands().freeBuffer(call.address).reply());
    const Return next = manager().readUntil("BR_TRANSACTION").last();
    QCOMPARE(next.callCode, 3u);
    manager().write(Commands().freeBuffer(next.address));
}

void DriverSpaceTest::freedPiecesJoin()
{
    Party caller(device());
    Party owner(device());
    QVector<quint32> handles;
    for (quint64 id = 1; id <= 4; ++id)
        handles.append(handOver(owner, id, caller));
    // Four neighbours, freed in an order that joins to both sides.
    QVector<quint64> addresses;
    for (const quint32 handle : qAsConst(handles)) {
        caller.write(Commands().oneWay(handle, 1, bytes(Mapping / 10)));
        caller.readUntil("BR_TRANSACTION_COMPLETE");
        addresses.append(owner.readUntil("BR_TRANSACTION").last().address);
    }
    for (const int i : {1, 3, 0, 2})
        owner.write(Commands().freeBuffer(addresses.at(i)));

    caller.write(Commands().call(handles.first(), 2, bytes(Mapping)));

    QCOMPARE(owner.serve().data.size(), Mapping);
    caller.write(Commands().freeBuffer(caller.readUntil("BR_REPLY").last().address));
}

void DriverSpaceTest::aReplyThatIsTooLargeFailsTheCall()
{
    Party caller(device(), 8192);
    caller.write(Commands().call(0, 1));
    const Return call = manager().read().last();
    manager().write(Commands().freeBuffer(call.address));

    manager().exchange(Commands().reply(bytes(8200)), 0);

    QCOMPARE(manager().readUntil("BR_TRANSACTION_COMPLETE").names(),
             QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    QCOMPARE(caller.readUntil("BR_FAILED_REPLY").names(),
             (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"),
                          QStringLiteral("BR_FAILED_REPLY")}));
}

void DriverSpaceTest::whoHasNoMappingCannotBeCalled()
{
    Party owner(device());
    Party unmapped(device(), 0);
    // Without a mapping no reply can come, so the object goes out one-way.
    unmapped.write(Commands().oneWay(0, 1, Message().ownObject(5)));
    unmapped.answerAnnouncements(unmapped.readUntil("BR_TRANSACTION_COMPLETE"));
    const Return received = manager().read().last();
    const auto handle = static_cast<quint32>(received.objectNumber());

    manager().write(Commands().call(handle, 1));

    QCOMPARE(manager().readUntil("BR_DEAD_REPLY").names(),
             QStringList{QStringLiteral("BR_DEAD_REPLY")});
    manager().write(Commands().freeBuffer(received.address));
}

void DriverSpaceTest::whoHasNoMappingGetsNoReply()
{
    Party unmapped(device(), 0);
    unmapped.write(Commands().call(0, 1));
    const Return call = manager().read().last();
    manager().write(Commands().freeBuffer(call.address));

    manager().exchange(Commands().reply(), 0);

    QCOMPARE(
        unmapped.readUntil("BR_DEAD_REPLY").names(),
        (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"), QStringLiteral("BR_DEAD_REPLY")}));
    manager().readUntil("BR_TRANSACTION_COMPLETE");
}

void DriverSpaceTest::noMoreThan4MiBOfAMappingAreUsed()
{
    constexpr int Largest = 4 * 1024 * 1024;
    Party owner(device(), 2 * Largest);
    Party other(device());
    const quint32 handle = handOver(owner, 5, manager());
    const quint32 others = handOver(owner, 5, other);

    manager().exchange(Commands().call(handle, 1, bytes(Largest + 8)), 0);
    QCOMPARE(manager().readUntil("BR_FAILED_REPLY").names(), Failed);

    manager().write(Commands().call(handle, 2, bytes(Largest - 4096)));
    const Return call = owner.readUntil("BR_TRANSACTION").last();
    other.exchange(Commands().call(others, 3, bytes(8192)), 0);
    QCOMPARE(other.readUntil("BR_FAILED_REPLY").names(), Failed);

    owner.write(Commands().freeBuffer(call.address).reply());
    owner.readUntil("BR_TRANSACTION_COMPLETE");
    manager().write(Commands().freeBuffer(manager().readUntil("BR_REPLY").last().address));
    callAndServe(manager(), handle, owner, bytes(Largest));
}

void DriverSpaceTest::aHugeMessageFails()
{
    Party caller(device());
    // Sizes whose sum is small again when it overflows.
    binder_transaction_data huge = {};
    huge.data_size = ~quint64(0) - 7;
    huge.offsets_size = 16;

    caller.exchange(Commands().add(BC_TRANSACTION, huge), 0);

    QCOMPARE(caller.readUntil("BR_FAILED_REPLY").names(), Failed);
}
