#include "sim/driverfiletest.h"

#include <QtTest>

namespace {

Message &appendFile(Message &message, Party &owner, const QByteArray &content)
{
    return message.object(BINDER_TYPE_FD, static_cast<quint64>(owner.makeFile(content)), 0);
}

int fileIn(const Return &message, int offset = 0)
{
    return static_cast<int>(message.objectNumber(offset));
}

} // namespace

void DriverFileTest::aFileArrivesOpen()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    Message message;
    appendFile(message, manager(), "content");

    manager().write(Commands().oneWay(handle, 1, message));

    const Return call = owner.readUntil("BR_TRANSACTION").last();
    QCOMPARE(call.objectType(), quint32(BINDER_TYPE_FD));
    QCOMPARE(call.offsets, QVector<quint64>{0});
    QCOMPARE(owner.readFile(fileIn(call)), QByteArray("content"));
    owner.write(Commands().freeBuffer(call.address));
}

void DriverFileTest::severalFilesArriveInOrder()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    Message message;
    appendFile(message, manager(), "one");
    message.handle(handle);
    appendFile(message, manager(), "two");

    // Two messages in one write: each has its own files.
    Message other;
    appendFile(other, manager(), "three");
    manager().write(Commands().oneWay(handle, 1, message).oneWay(handle, 2, other));

    const Return first = owner.readUntil("BR_TRANSACTION").last();
    QCOMPARE(owner.readFile(fileIn(first)), QByteArray("one"));
    QCOMPARE(first.objectNumber(ObjectSize), quint64(5));
    QCOMPARE(owner.readFile(fileIn(first, 2 * ObjectSize)), QByteArray("two"));
    owner.write(Commands().freeBuffer(first.address));
    const Return second = owner.readUntil("BR_TRANSACTION").last();
    QCOMPARE(owner.readFile(fileIn(second)), QByteArray("three"));
    owner.write(Commands().freeBuffer(second.address));
}

void DriverFileTest::aFileOutlivesItsBuffer()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    Message message;
    appendFile(message, manager(), "content");
    manager().write(Commands().oneWay(handle, 1, message));
    const Return call = owner.readUntil("BR_TRANSACTION").last();

    owner.write(Commands().freeBuffer(call.address));

    QCOMPARE(owner.readFile(fileIn(call)), QByteArray("content"));
}

void DriverFileTest::anObjectThatAcceptsNoFilesIsNotSentAny()
{
    expectMisuse("a file descriptor for a receiver that accepts none");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager(), 0x13);
    Message message;
    appendFile(message, manager(), "content");

    manager().exchange(Commands().call(handle, 1, message), 0);

    QCOMPARE(manager().readUntil("BR_FAILED_REPLY").names(), Failed);
    QVERIFY(!owner.isReadable());
}

void DriverFileTest::aReplyCarriesFilesOnlyIfTheCallAcceptsThem_data()
{
    QTest::addColumn<bool>("accepts");
    QTest::newRow("accepted") << true;
    QTest::newRow("not accepted") << false;
}

void DriverFileTest::aReplyCarriesFilesOnlyIfTheCallAcceptsThem()
{
    QFETCH(bool, accepts);
    if (!accepts)
        expectMisuse("a file descriptor for a receiver that accepts none");
    Party caller(device());
    caller.write(Commands().call(0, 1, {}, accepts ? TF_ACCEPT_FDS : 0));
    const Return call = manager().readUntil("BR_TRANSACTION").last();
    manager().write(Commands().freeBuffer(call.address));
    Message message;
    appendFile(message, manager(), "content");

    manager().exchange(Commands().reply(message), 0);

    manager().readUntil("BR_TRANSACTION_COMPLETE");
    if (accepts) {
        const Return reply = caller.readUntil("BR_REPLY").last();
        QCOMPARE(caller.readFile(fileIn(reply)), QByteArray("content"));
        caller.write(Commands().freeBuffer(reply.address));
    } else {
        caller.readUntil("BR_FAILED_REPLY");
    }
}

void DriverFileTest::aDescriptorThatIsNotOpenIsRefused()
{
    expectMisuse("a message with a bad file descriptor");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());

    manager().exchange(Commands().call(handle, 1, Message().object(BINDER_TYPE_FD, 1000, 0)), 0);

    QCOMPARE(manager().readUntil("BR_FAILED_REPLY").names(), Failed);
}
