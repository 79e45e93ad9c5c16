#include "sim/drivertest.h"

#include <QtTest>

const QStringList DriverTest::Failed = {QStringLiteral("BR_FAILED_REPLY")};

void DriverTest::initTestCase()
{
    const QString reason = DeviceUnderTest::reasonToSkip();
    if (!reason.isEmpty())
        QSKIP(qPrintable(reason));
}

void DriverTest::init()
{
    TestCase::init();
    m_expectedMisuse.clear();
    m_expectsAnyMisuse = false;
    m_device = std::make_unique<DeviceUnderTest>();
    QVERIFY(m_device->start());
    startManager();
}

void DriverTest::cleanup()
{
    m_manager.reset();
    QString crash;
    const QStringList misuse = m_device->stop(&crash);
    QCOMPARE(crash, QString());
    if (DeviceUnderTest::notesMisuse() && !m_expectsAnyMisuse)
        QCOMPARE(misuse, m_expectedMisuse);
    TestCase::cleanup();
}

void DriverTest::startManager()
{
    m_manager = std::make_unique<Party>(device());
    QVERIFY(m_manager->becomeContextManager());
}

quint32 DriverTest::handOver(Party &owner, quint64 id, Party &receiver, quint32 objectFlags)
{
    Message object;
    object.object(BINDER_TYPE_BINDER, id, Message::cookieOf(id), objectFlags);
    owner.write(Commands().call(0, 1, object));
    const Return registration = manager().readUntil("BR_TRANSACTION").last();
    const auto kept = static_cast<quint32>(registration.objectNumber());
    manager().write(Commands().acquire(kept).freeBuffer(registration.address).reply());
    manager().readUntil("BR_TRANSACTION_COMPLETE");
    const Outcome registered = owner.readUntil("BR_REPLY");
    owner.answerAnnouncements(registered);
    owner.write(Commands().freeBuffer(registered.last().address));
    if (&receiver == m_manager.get())
        return kept;

    receiver.write(Commands().call(0, 2));
    manager().serve(Message().handle(kept));
    const Return found = receiver.readUntil("BR_REPLY").last();
    const auto handle = static_cast<quint32>(found.objectNumber());
    receiver.write(Commands().acquire(handle).freeBuffer(found.address));
    manager().write(Commands().release(kept));
    return handle;
}

Return DriverTest::callAndServe(Party &caller, quint32 handle, Party &callee,
                                const Message &request, const Message &reply)
{
    caller.write(Commands().call(handle, 7, request));
    callee.serve(reply);
    const Return answer = caller.readUntil("BR_REPLY").last();
    caller.write(Commands().freeBuffer(answer.address));
    return answer;
}
