#include "platform/binder/phone.h"
#include "support/testcase.h"

#include <QtTest>

using namespace Binder;

class TestRemoteObject : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void handlersRunOnceFromTheEventLoop();
    void handlersShareOneRequest();
    void handlersOfADeadObjectRunSoon();
    void handlersOfAnObjectKnownToBeDeadRunSoon();
    void removedHandlersDoNotRun();
    void handlersCanBeRemovedBetweenDeathAndDelivery();
    void handlersCanRemoveOneAnother();
    void handlersMayReleaseEverything();
    void deathIsNotToldInsideACall();
    void isKnownToBeDeadOnceACallIsRefused();
    void isKnownToBeDeadOnceTheDeviceIsLost();
    void isNotKnownToBeDeadForWantOfAnAnswer();
    void isNotKnownToBeDeadWhenTheDeviceIsLostInACall();
    void releasedObjectsAreNotTold();
    void objectsReleasedAfterDeathAreNotTold();
    void unknownIdsAreIgnored();
};

void TestRemoteObject::handlersRunOnceFromTheEventLoop()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    int deaths = 0;
    QVERIFY(object->addDeathHandler([&] { ++deaths; }) != NoHandler);

    phone.binder.kill(phone.thing);
    QCOMPARE(deaths, 0);
    QTRY_COMPARE(deaths, 1);
    QTRY_VERIFY(phone.binder.isIdle());
    QCoreApplication::processEvents();
    QCOMPARE(deaths, 1);
}

void TestRemoteObject::handlersShareOneRequest()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    const auto other = phone.binder.addService("other");
    const auto otherObject = phone.manager->getService("other");
    int first = 0;
    int second = 0;
    int unrelated = 0;
    object->addDeathHandler([&] { ++first; });
    object->addDeathHandler([&] { ++second; });
    otherObject->addDeathHandler([&] { ++unrelated; });

    phone.binder.kill(phone.thing);
    QTRY_COMPARE(first + second, 2);
    QCOMPARE(first, 1);
    QCOMPARE(unrelated, 0);
}

void TestRemoteObject::handlersOfADeadObjectRunSoon()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    phone.binder.kill(phone.thing);

    bool told = false;
    object->addDeathHandler([&] { told = true; });
    QVERIFY(!told);
    QTRY_VERIFY(told);
}

void TestRemoteObject::handlersOfAnObjectKnownToBeDeadRunSoon()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    bool first = false;
    object->addDeathHandler([&] { first = true; });
    phone.binder.kill(phone.thing);
    QTRY_VERIFY(first);

    bool second = false;
    object->addDeathHandler([&] { second = true; });
    QVERIFY(!second);
    QTRY_VERIFY(second);
}

void TestRemoteObject::removedHandlersDoNotRun()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    bool removedRan = false;
    bool ran = false;
    const HandlerId id = object->addDeathHandler([&] { removedRan = true; });
    object->addDeathHandler([&] { ran = true; });
    object->removeHandler(id);

    phone.binder.kill(phone.thing);
    QTRY_VERIFY(ran);
    QVERIFY(!removedRan);
}

void TestRemoteObject::handlersCanBeRemovedBetweenDeathAndDelivery()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    bool ran = false;
    const HandlerId id = object->addDeathHandler([&] { ran = true; });
    phone.binder.kill(phone.thing);
    object->removeHandler(id);

    QTRY_VERIFY(phone.binder.isIdle());
    QCoreApplication::processEvents();
    QVERIFY(!ran);
}

void TestRemoteObject::handlersCanRemoveOneAnother()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    int ran = 0;
    HandlerId first = NoHandler;
    HandlerId second = NoHandler;
    first = object->addDeathHandler([&] {
        ++ran;
        object->removeHandler(second);
    });
    second = object->addDeathHandler([&] {
        ++ran;
        object->removeHandler(first);
    });

    phone.binder.kill(phone.thing);
    QTRY_COMPARE(ran, 1);
    QCoreApplication::processEvents();
    QCOMPARE(ran, 1);
}

void TestRemoteObject::handlersMayReleaseEverything()
{
    Phone phone;
    auto object = phone.manager->getService("thing");
    bool other = false;
    object->addDeathHandler([&] {
        object.reset();
        phone.client.reset();
        phone.manager.reset();
    });
    object->addDeathHandler([&] { other = true; });

    phone.binder.kill(phone.thing);
    QTRY_VERIFY(object == nullptr);
    QTRY_VERIFY(!phone.binder.isOpen());
    QVERIFY(!other); // nobody holds the object that it was about
}

void TestRemoteObject::deathIsNotToldInsideACall()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    bool told = false;
    object->addDeathHandler([&] { told = true; });
    const auto other = phone.binder.addService("other");
    other->setHandler([&](const FakeTransaction &) {
        phone.binder.kill(phone.thing);
        return FakeReply();
    });
    const auto client = Client::create(phone.manager->getService("other"), "test.IOther");

    QVERIFY(client->transact(1, *client->createRequest()) != nullptr);
    Status status = StatusOk;
    QVERIFY(phone.client->transact(1, *phone.client->createRequest(), &status) == nullptr);
    QCOMPARE(status, StatusDeadObject);
    QVERIFY(!told);
    QTRY_VERIFY(told);
}

void TestRemoteObject::isKnownToBeDeadOnceACallIsRefused()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    const auto other = phone.binder.addService("other");
    const auto otherObject = phone.manager->getService("other");
    bool told = false;
    object->addDeathHandler([&] { told = true; });
    phone.binder.kill(phone.thing);
    QVERIFY(!object->isKnownDead());

    QVERIFY(phone.client->transact(5, *phone.client->createRequest()) == nullptr);

    QVERIFY(object->isKnownDead());
    QVERIFY(!otherObject->isKnownDead());
    QVERIFY(!told);
    QTRY_VERIFY(told);
}

void TestRemoteObject::isKnownToBeDeadOnceTheDeviceIsLost()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    const auto other = phone.binder.addService("other");
    const auto otherObject = phone.manager->getService("other");
    const auto otherClient = Client::create(otherObject, "test.IOther");
    phone.binder.breakFile();

    // The first call finds it out, the second does not even get to the driver.
    QVERIFY(phone.client->transact(5, *phone.client->createRequest()) == nullptr);
    QVERIFY(object->isKnownDead());
    QVERIFY(!otherObject->isKnownDead());
    QVERIFY(otherClient->transact(5, *otherClient->createRequest()) == nullptr);
    QVERIFY(otherObject->isKnownDead());
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

// Whoever died has had the call, or may have had it.
void TestRemoteObject::isNotKnownToBeDeadForWantOfAnAnswer()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    phone.thing->setReply(5, FakeReply::dead());
    phone.thing->setReply(6, FakeReply::statusCode(StatusDeadObject));
    phone.thing->setReply(7, FakeReply::failed());

    for (quint32 code = 5; code <= 7; ++code)
        QVERIFY(phone.client->transact(code, *phone.client->createRequest()) == nullptr);

    QVERIFY(!object->isKnownDead());
    QVERIFY(isOneRefusal(takeLog(QtWarningMsg), 7));
}

void TestRemoteObject::isNotKnownToBeDeadWhenTheDeviceIsLostInACall()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    phone.thing->setHandler([&](const FakeTransaction &) {
        phone.binder.breakFile();
        return FakeReply();
    });
    phone.binder.quirks.loneNoops = 1; // in place of the reply, which nobody reads any more

    Status status = StatusOk;
    QVERIFY(phone.client->transact(5, *phone.client->createRequest(), &status) == nullptr);

    QCOMPARE(status, StatusDeadObject);
    QVERIFY(!object->isKnownDead());
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void TestRemoteObject::releasedObjectsAreNotTold()
{
    Phone phone;
    bool told = false;
    phone.binder.addService("other");
    auto object = phone.manager->getService("other");
    object->addDeathHandler([&] { told = true; });
    object.reset();

    phone.binder.killRuntime();
    QTRY_VERIFY(phone.binder.isIdle());
    QCoreApplication::processEvents();
    QVERIFY(!told);
}

void TestRemoteObject::objectsReleasedAfterDeathAreNotTold()
{
    Phone phone;
    bool told = false;
    const auto other = phone.binder.addService("other");
    auto object = phone.manager->getService("other");
    object->addDeathHandler([&] { told = true; });
    phone.binder.kill(other);
    object.reset();

    QTRY_VERIFY(phone.binder.isIdle());
    QCoreApplication::processEvents();
    QVERIFY(!told);
}

void TestRemoteObject::unknownIdsAreIgnored()
{
    Phone phone;
    const auto object = phone.manager->getService("thing");
    object->removeHandler(NoHandler);
    object->removeHandler(987654321);
}

QTEST_GUILESS_MAIN(TestRemoteObject)
#include "test_remoteobject.moc"
