#include "sim/driverobjecttest.h"

#include <QtTest>

namespace {

constexpr quint32 OwnObject = 0x73622a85;
constexpr quint32 Handle = 0x73682a85;
constexpr quint32 WeakOwnObject = 0x77622a85;
constexpr quint32 WeakHandle = 0x77682a85;

} // namespace

void DriverObjectTest::anOwnObjectArrivesAsAHandle()
{
    Party owner(device());
    owner.write(Commands().oneWay(0, 1, Message(QByteArray("word")).ownObject(5)));

    const Return call = manager().read().last();

    QCOMPARE(call.data.size(), 4 + ObjectSize);
    QCOMPARE(call.offsets, QVector<quint64>{4});
    QCOMPARE(call.data.left(4), QByteArray("word"));
    QCOMPARE(call.objectType(4), Handle);
    QCOMPARE(call.objectFlags(4), 0x113u);
    QCOMPARE(call.objectNumber(4), quint64(1));
    QCOMPARE(call.objectCookie(4), quint64(0));
    manager().write(Commands().freeBuffer(call.address));
}

void DriverObjectTest::anObjectIsAnnouncedBeforeTheCompletion()
{
    Party owner(device());
    owner.write(Commands().call(0, 1, Message().ownObject(5)));
    QVERIFY(!owner.isReadable());
    const Return call = manager().read().last();
    manager().write(Commands()
                        .acquire(static_cast<quint32>(call.objectNumber()))
                        .freeBuffer(call.address)
                        .reply());

    const Outcome outcome = owner.read();

    QCOMPARE(outcome.allNames(),
             (QStringList{QStringLiteral("BR_NOOP"), QStringLiteral("BR_INCREFS"),
                          QStringLiteral("BR_ACQUIRE"), QStringLiteral("BR_TRANSACTION_COMPLETE"),
                          QStringLiteral("BR_REPLY")}));
    for (const char *name : {"BR_INCREFS", "BR_ACQUIRE"}) {
        QCOMPARE(outcome.first(name).id, quint64(5));
        QCOMPARE(outcome.first(name).cookie, Message::cookieOf(5));
    }
    owner.answerAnnouncements(outcome);
    owner.write(Commands().freeBuffer(outcome.last().address));
}

void DriverObjectTest::anObjectIsAnnouncedOnce()
{
    Party owner(device());
    handOver(owner, 5, manager());

    owner.write(Commands().oneWay(0, 1, Message().ownObject(5)));

    QCOMPARE(owner.read().names(), QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    manager().write(Commands().freeBuffer(manager().read().last().address));
}

void DriverObjectTest::anObjectHasOneHandlePerFile()
{
    Party owner(device());
    owner.write(Commands().oneWay(0, 1, Message().ownObject(5).ownObject(6).ownObject(5)));

    const Return call = manager().read().last();

    const quint64 first = call.objectNumber(0);
    const quint64 second = call.objectNumber(ObjectSize);
    QVERIFY(first != second);
    QCOMPARE(call.objectNumber(2 * ObjectSize), first);
    manager().write(Commands().freeBuffer(call.address));
}

void DriverObjectTest::aHandleArrivesAsTheReceiversHandle()
{
    Party owner(device());
    Party receiver(device());
    handOver(owner, 5, receiver);
    const quint32 managers = handOver(owner, 6, manager());
    receiver.write(Commands().call(0, 1));

    manager().serve(Message().handle(managers));

    const Return reply = receiver.readUntil("BR_REPLY").last();
    QCOMPARE(reply.objectType(), Handle);
    QCOMPARE(reply.objectNumber(), quint64(2)); // 1 is the other object's
    receiver.write(Commands().oneWay(2, 9));
    const Return call = owner.readUntil("BR_TRANSACTION").last();
    QCOMPARE(call.id, quint64(6));
    owner.write(Commands().freeBuffer(call.address));
    receiver.write(Commands().freeBuffer(reply.address));
}

void DriverObjectTest::anObjectComesHomeAsItself()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    owner.write(Commands().call(0, 1));

    manager().serve(Message().handle(handle));

    const Return reply = owner.readUntil("BR_REPLY").last();
    QCOMPARE(reply.objectType(), OwnObject);
    QCOMPARE(reply.objectNumber(), quint64(5));
    QCOMPARE(reply.objectCookie(), Message::cookieOf(5));
    owner.write(Commands().freeBuffer(reply.address));
}

void DriverObjectTest::aWeakObjectArrivesAsAWeakHandle()
{
    Party owner(device());
    owner.write(Commands().oneWay(0, 1, Message().object(WeakOwnObject, 5, Message::cookieOf(5))));

    QCOMPARE(owner.read().names(), (QStringList{QStringLiteral("BR_INCREFS"),
                                                QStringLiteral("BR_TRANSACTION_COMPLETE")}));
    const Return call = manager().read().last();
    QCOMPARE(call.objectType(), WeakHandle);
    QCOMPARE(call.objectNumber(), quint64(1));
    owner.write(Commands().incRefsDone(5));
    manager().write(Commands().freeBuffer(call.address));
}

void DriverObjectTest::aWeakHandleComesHomeWeak()
{
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    owner.write(Commands().call(0, 1));

    manager().serve(Message().object(WeakHandle, handle, 0));

    const Return reply = owner.readUntil("BR_REPLY").last();
    QCOMPARE(reply.objectType(), WeakOwnObject);
    QCOMPARE(reply.objectNumber(), quint64(5));
    owner.write(Commands().freeBuffer(reply.address));
}

void DriverObjectTest::theFlagsOfTheFirstSendingCount()
{
    // Bit 8, "accepts file descriptors", is missing at first.
    expectMisuse("a file descriptor for a receiver that accepts none");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager(), 0x13);
    handOver(owner, 5, manager(), 0x113);
    const auto file = static_cast<quint64>(manager().makeFile("content"));

    manager().exchange(Commands().oneWay(handle, 1, Message().object(BINDER_TYPE_FD, file, 0)), 0);

    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverObjectTest::handlesAreTheLowestThatAreFree()
{
    Party owner(device());
    QCOMPARE(handOver(owner, 1, manager()), 1u);
    QCOMPARE(handOver(owner, 2, manager()), 2u);
    QCOMPARE(handOver(owner, 3, manager()), 3u);

    manager().write(Commands().release(2));

    QCOMPARE(handOver(owner, 4, manager()), 2u);
    QCOMPARE(handOver(owner, 5, manager()), 4u);
}

void DriverObjectTest::manyObjectsTravelInOneMessage()
{
    constexpr int Count = 500;
    Party owner(device());
    Message message;
    for (quint64 id = 1; id <= Count; ++id)
        message.ownObject(id);
    owner.write(Commands().oneWay(0, 1, message));

    const Return call = manager().read().last();

    QCOMPARE(call.offsets.size(), Count);
    for (int i = 0; i < Count; ++i)
        QCOMPARE(call.objectNumber(i * ObjectSize), quint64(i + 1));
    manager().write(Commands().freeBuffer(call.address));
}

void DriverObjectTest::badObjectsAreRefused_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QVector<quint64>>("offsets");
    QTest::addColumn<QString>("misuse");

    const QByteArray object = Message().ownObject(5).data;
    const QString badOffset = QStringLiteral("a message with a bad object offset");
    QTest::newRow("beyond the data") << object << QVector<quint64>{24} << badOffset;
    QTest::newRow("reaching beyond the data") << object << QVector<quint64>{4} << badOffset;
    QTest::newRow("far beyond, as if negative")
        << object << QVector<quint64>{~quint64(0) - 3} << badOffset;
    QTest::newRow("data too short for any object")
        << object.left(20) << QVector<quint64>{0} << badOffset;
    QTest::newRow("not a multiple of 4") << "ab" + object << QVector<quint64>{2} << badOffset;
    QTest::newRow("twice the same") << object << QVector<quint64>{0, 0} << badOffset;
    QTest::newRow("overlapping") << object + object << QVector<quint64>{0, 20} << badOffset;
    QTest::newRow("descending") << object + object << QVector<quint64>{24, 0} << badOffset;
    QTest::newRow("unknown type") << Message().object(0x12345678, 1, 0).data << QVector<quint64>{0}
                                  << QStringLiteral("a message with an object of unknown type");
    const QString notHeld = QStringLiteral("a message with a handle that it does not have");
    QTest::newRow("a handle that is not held")
        << Message().handle(77).data << QVector<quint64>{0} << notHeld;
    QTest::newRow("handle 0 without a reference")
        << Message().handle(0).data << QVector<quint64>{0} << notHeld;
}

void DriverObjectTest::badObjectsAreRefused()
{
    QFETCH(QByteArray, data);
    QFETCH(QVector<quint64>, offsets);
    QFETCH(QString, misuse);
    expectMisuse(qPrintable(misuse));
    Party sender(device());
    Message message(data);
    message.offsets = offsets;

    sender.exchange(Commands().call(0, 1, message), 0);

    QCOMPARE(sender.readUntil("BR_FAILED_REPLY").names(),
             QStringList{QStringLiteral("BR_FAILED_REPLY")});
    QVERIFY(!manager().isReadable());
}

void DriverObjectTest::anotherCookieForTheSameObjectIsRefused()
{
    expectMisuse("a message with an object whose cookie is another than before");
    Party owner(device());
    handOver(owner, 5, manager());

    owner.exchange(Commands().oneWay(0, 1, Message().object(OwnObject, 5, 1)), 0);

    QCOMPARE(owner.read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});
}

void DriverObjectTest::aWeakHandleIsNoStrongOne()
{
    expectMisuse("BC_TRANSACTION to a handle without a strong reference");
    expectMisuse("a message with a handle that it does not have");
    Party owner(device());
    const quint32 handle = handOver(owner, 5, manager());
    Party receiver(device());
    manager().write(Commands().incRefs(handle).release(handle));

    manager().exchange(Commands().call(handle, 1), 0);
    QCOMPARE(manager().read().names(), QStringList{QStringLiteral("BR_FAILED_REPLY")});

    receiver.write(Commands().call(0, 1));
    const Return call = manager().read().last();
    manager().write(Commands().freeBuffer(call.address));
    manager().exchange(Commands().reply(Message().handle(handle)), 0);
    receiver.readUntil("BR_FAILED_REPLY");
}

void DriverObjectTest::whatARefusedMessageCarriedIsNotAnnounced()
{
    expectMisuse("a message with a handle that it does not have");
    Party owner(device());

    owner.exchange(Commands().call(0, 1, Message().ownObject(5).handle(77)), 0);

    QCOMPARE(owner.readUntil("BR_FAILED_REPLY").names(),
             QStringList{QStringLiteral("BR_FAILED_REPLY")});
    QVERIFY(!owner.isReadable());
    // Nothing of it stays: the number is free for the next object.
    QCOMPARE(handOver(owner, 6, manager()), 1u);
}

void DriverObjectTest::aRefusedReplyFailsTheCall()
{
    expectMisuse("a message with a handle that it does not have");
    Party caller(device());
    caller.write(Commands().call(0, 1));
    const Return call = manager().read().last();

    const Commands reply = Commands().freeBuffer(call.address).reply(Message().handle(77));
    manager().exchange(reply, 0);

    QCOMPARE(manager().readUntil("BR_TRANSACTION_COMPLETE").names(),
             QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE")});
    QCOMPARE(caller.readUntil("BR_FAILED_REPLY").names(),
             (QStringList{QStringLiteral("BR_TRANSACTION_COMPLETE"),
                          QStringLiteral("BR_FAILED_REPLY")}));
    // The callee is done with the call: it can be called again.
    caller.write(Commands().call(0, 2));
    QCOMPARE(manager().serve().callCode, 2u);
    caller.write(Commands().freeBuffer(caller.readUntil("BR_REPLY").last().address));
}
