#include "binder/umbrabindercallbackclient.h"
#include "binder/umbrabindertransaction.h"
#include "fakes/fakebinder.h"
#include "platform/binder/servicemanager.h"
#include "support/testcase.h"

#include <QPointer>
#include <QtTest>

namespace {

constexpr char Descriptor[] = "test.IRemoteCallback";

class Listener : public UmbraBinderCallbackClientListener
{
public:
    void onRemoteObjectDied(UmbraBinderCallbackClient *client) override
    {
        died.append(client);
        if (deleteIt)
            delete client;
    }

    QVector<UmbraBinderCallbackClient *> died;
    bool deleteIt = false;
};

} // namespace

class UmbraBinderCallbackClientTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void isNotMadeWithoutAnObject();
    void callsTheObject();
    void tellsOfTheObjectsDeathAndDeletesItself();
    void itsTransactionsFailAfterTheObjectsDeath();
    void mayBeDeletedByItsListener();
    void releasesTheObject();
};

void UmbraBinderCallbackClientTest::isNotMadeWithoutAnObject()
{
    Listener listener;
    QVERIFY(UmbraBinderCallbackClient::create(&listener, nullptr, Descriptor) == nullptr);
}

void UmbraBinderCallbackClientTest::callsTheObject()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    Listener listener;
    const std::unique_ptr<UmbraBinderCallbackClient> client(
        UmbraBinderCallbackClient::create(&listener, manager->getService("thing"), Descriptor));

    UmbraBinderTransaction *transaction = client->createTransaction(3, false);
    transaction->request().writeInt32(7);
    QCOMPARE(transaction->execute(), 0);

    QCOMPARE(transaction->parent(), client.get());
    QCOMPARE(thing->transactions().front().code, 3U);
    QCOMPARE(thing->transactions().front().data,
             FakeParcel().token(QLatin1String(Descriptor), {0x00400000}).int32(7).data());
}

void UmbraBinderCallbackClientTest::tellsOfTheObjectsDeathAndDeletesItself()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    Listener listener;
    QPointer<UmbraBinderCallbackClient> client =
        UmbraBinderCallbackClient::create(&listener, manager->getService("thing"), Descriptor);
    UmbraBinderCallbackClient *told = client;
    QSignalSpy changed(client.data(), &UmbraBinderCallbackClient::onConnectionChanged);

    binder.kill(thing);

    QTRY_VERIFY(client.isNull());
    QCOMPARE(listener.died, QVector<UmbraBinderCallbackClient *>({told}));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().toBool(), false);
}

void UmbraBinderCallbackClientTest::itsTransactionsFailAfterTheObjectsDeath()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    Listener listener;
    UmbraBinderCallbackClient *client =
        UmbraBinderCallbackClient::create(&listener, manager->getService("thing"), Descriptor);
    UmbraBinderTransaction *transaction = client->createTransaction(3, false);
    transaction->setParent(nullptr);
    const std::unique_ptr<UmbraBinderTransaction> owned(transaction);

    binder.kill(thing);
    QTRY_COMPARE(listener.died.size(), 1);

    QCOMPARE(transaction->execute(), -1);
}

void UmbraBinderCallbackClientTest::mayBeDeletedByItsListener()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    Listener listener;
    listener.deleteIt = true;
    QPointer<UmbraBinderCallbackClient> client =
        UmbraBinderCallbackClient::create(&listener, manager->getService("thing"), Descriptor);

    binder.kill(thing);

    QTRY_VERIFY(client.isNull());
    QCOMPARE(listener.died.size(), 1);
}

void UmbraBinderCallbackClientTest::releasesTheObject()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    Listener listener;
    delete UmbraBinderCallbackClient::create(&listener, manager->getService("thing"), Descriptor);

    binder.kill(thing); // an object still referred to would be reported when the file is closed
    QTRY_VERIFY(binder.isIdle());

    QCOMPARE(listener.died.size(), 0);
}

QTEST_GUILESS_MAIN(UmbraBinderCallbackClientTest)
#include "tst_umbrabindercallbackclient.moc"
