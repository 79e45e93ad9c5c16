#include "binder/umbrabinderconnection.h"
#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/message.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "support/testcase.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <utility>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");

constexpr char Name[] = "thing";
constexpr char Descriptor[] = "test.IThing";
constexpr bool Persistent = true;
constexpr bool OnDemand = false;

/// What connectionChanged() has told so far.
QVector<bool> told(const QSignalSpy &changed)
{
    QVector<bool> values;
    for (const QVariantList &arguments : changed)
        values.append(arguments.first().toBool());
    return values;
}

int lookups(const FakeBinder &binder)
{
    const auto &transactions = binder.contextManager()->transactions();
    return static_cast<int>(std::count_if(transactions.begin(), transactions.end(),
                                          [](const auto &call) { return call.code == 2; }));
}

} // namespace

class UmbraBinderConnectionTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void staysIdleUntilTheUnitIsActive_data();
    void staysIdleUntilTheUnitIsActive();
    void connectsAtOnceWhileTheUnitIsActive();
    void handsOutOneClient();
    void waitsForTheServiceToBeRegistered();
    void reconnectsAfterTheServicesDeath();
    void isDownOnceACallIsRefused();
    void reconnectsOnceItsServiceIsThereAgain();
    void opensALostDeviceAnew();
    void opensADeviceThatWasLostInVainWithTheNextActive();
    void letsGoWhenTheUnitIsDeactivating();
    void opensTheDeviceAnewAfterwards();
    void stoppingTellsEvenWhatNeverConnected();
    void keepsItsStateInOtherUnitStates();
    void connectsAnewWhenTheUnitIsActiveOnceMore();
    void saysThatThereIsNoDevice();
    void findsTheDeviceWithTheNextActive();
    void tellsOfAServiceWithoutInterface();
    void onDemandConnectsOnlyWhenAsked();
    void onDemandHandsOutNoneForAMissingService();
    void onDemandTimesOutAndConnectsAnew();
    void onDemandConnectsOnRequestAfterADeath();
    void persistentNeverTimesOut();
    void givesNoClientToThoseWhoHearOfTheDisconnection();
    void logsItsDestruction();
    void tellsOfItsDestruction();
    void mayBeDeletedByThoseWhoHearOfTheDisconnection();
    void mayBeDeletedByThoseWhoHearOfTheConnection();
    void mayBeDeletedInsideItsOwnCall();
    void mayEndWhileTheServiceManagerIsAsked();

private:
    RuntimeHost m_host;
};

void UmbraBinderConnectionTest::initTestCase()
{
    QVERIFY(m_host.start());
}

void UmbraBinderConnectionTest::init()
{
    TestCase::init();
    QVERIFY(m_host.setUnitState(QStringLiteral("inactive")));
}

void UmbraBinderConnectionTest::staysIdleUntilTheUnitIsActive_data()
{
    QTest::addColumn<QString>("state");

    QTest::newRow("activating") << QStringLiteral("activating");
    QTest::newRow("inactive") << QStringLiteral("inactive");
    QTest::newRow("failed") << QStringLiteral("failed");
}

void UmbraBinderConnectionTest::staysIdleUntilTheUnitIsActive()
{
    QFETCH(QString, state);
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(state));

    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    QVERIFY(connection.client() == nullptr);
    QCOMPARE(binder.timesOpened(), 0);

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QCOMPARE(told(changed), QVector<bool>({true}));
    QVERIFY(connection.client() != nullptr);
}

void UmbraBinderConnectionTest::connectsAtOnceWhileTheUnitIsActive()
{
    FakeBinder binder;
    const auto thing = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    takeLog(QtDebugMsg);

    UmbraBinderConnection connection(Name, Descriptor, Persistent);

    QVERIFY(connection.isConnected());
    QCOMPARE(connection.name(), Name);
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Connecting to Umbra service: thing"),
                          QStringLiteral("Connected to Umbra Service thing")}));
    const auto client = connection.client();
    QVERIFY(client->transact(7, *client->createRequest()) != nullptr);
    QCOMPARE(thing->transactions().size(), std::size_t(1));
    QCOMPARE(thing->transactions().front().data,
             FakeParcel().token(QStringLiteral("test.IThing"), {0x00400000}).data());
}

void UmbraBinderConnectionTest::handsOutOneClient()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    const int before = lookups(binder);

    QCOMPARE(connection.client(), connection.client());

    QCOMPARE(lookups(binder), before);
}

void UmbraBinderConnectionTest::waitsForTheServiceToBeRegistered()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    takeLog(QtDebugMsg);
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    QVERIFY(!connection.isConnected());
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Connecting to Umbra service: thing"),
                          QStringLiteral("Could not find remote object for thing")}));

    binder.addService(Name);

    QTRY_COMPARE(told(changed), QVector<bool>({true}));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Connected to Umbra Service thing")));
}

void UmbraBinderConnectionTest::reconnectsAfterTheServicesDeath()
{
    FakeBinder binder;
    const auto before = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    const auto oldClient = connection.client();

    const auto after = binder.addService(Name);
    binder.kill(before);

    QTRY_COMPARE(told(changed), QVector<bool>({false, true}));
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("thing died! Trying to reconnect.")));
    QVERIFY(connection.client() != oldClient);
    QCOMPARE(binder.timesOpened(), 1);
}

void UmbraBinderConnectionTest::isDownOnceACallIsRefused()
{
    FakeBinder binder;
    const auto before = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    const auto client = connection.client();
    binder.addService(Name);
    binder.kill(before);
    QVERIFY(connection.isConnected()); // nobody has told it

    QVERIFY(client->transact(7, *client->createRequest()) == nullptr);

    QVERIFY(!connection.isConnected());
    QCOMPARE(told(changed), QVector<bool>());
    QTRY_COMPARE(told(changed), QVector<bool>({false, true}));
    QVERIFY(connection.isConnected());
    QVERIFY(takeLogLine(QtWarningMsg, QStringLiteral("thing died! Trying to reconnect.")));
}

void UmbraBinderConnectionTest::reconnectsOnceItsServiceIsThereAgain()
{
    FakeBinder binder;
    const auto before = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    binder.removeService(Name);
    binder.kill(before);
    QTRY_COMPARE(told(changed), QVector<bool>({false}));
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);
    QVERIFY(!connection.isConnected());

    binder.addService(Name);
    QTRY_COMPARE(told(changed), QVector<bool>({false, true}));
}

void UmbraBinderConnectionTest::opensALostDeviceAnew()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    binder.breakFile();
    QVERIFY(connection.client()->transact(5, *connection.client()->createRequest()) == nullptr);

    QTRY_COMPARE(told(changed), QVector<bool>({false, true}));
    QCOMPARE(binder.timesOpened(), 2);
    QVERIFY(connection.client()->transact(5, *connection.client()->createRequest()) != nullptr);
    QCOMPARE(takeLog(QtWarningMsg).size(), 2); // the device is lost, the service has died
}

void UmbraBinderConnectionTest::opensADeviceThatWasLostInVainWithTheNextActive()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    binder.breakFile();
    UmbraBinderConnection other("other", Descriptor, OnDemand);
    QVERIFY(other.client() == nullptr); // it has asked, and so found out
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);

    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("failed")));
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QTRY_COMPARE(told(changed), QVector<bool>({true}));
    QCOMPARE(binder.timesOpened(), 2);
}

void UmbraBinderConnectionTest::letsGoWhenTheUnitIsDeactivating()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QCOMPARE(told(changed), QVector<bool>({false}));
    QVERIFY(connection.client() == nullptr);
    QVERIFY(!binder.isOpen());
}

void UmbraBinderConnectionTest::opensTheDeviceAnewAfterwards()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    QCOMPARE(told(changed), QVector<bool>({true}));
    QCOMPARE(binder.timesOpened(), 2);
}

void UmbraBinderConnectionTest::stoppingTellsEvenWhatNeverConnected()
{
    FakeBinder binder;
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QCOMPARE(told(changed), QVector<bool>({false}));
}

void UmbraBinderConnectionTest::keepsItsStateInOtherUnitStates()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    for (const char *state : {"reloading", "failed", "inactive", "activating"})
        QVERIFY(m_host.setUnitState(QLatin1String(state)));

    QCOMPARE(told(changed), QVector<bool>());
    QVERIFY(connection.isConnected());
}

void UmbraBinderConnectionTest::connectsAnewWhenTheUnitIsActiveOnceMore()
{
    FakeBinder binder;
    const auto thing = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection other(Name, Descriptor, OnDemand); // shares the object
    const auto held = other.client();                        // and keeps it to the end
    QVERIFY(held != nullptr);
    auto connection = std::make_unique<UmbraBinderConnection>(Name, Descriptor, Persistent);
    QSignalSpy changed(connection.get(), &UmbraBinderConnection::connectionChanged);

    QVERIFY(m_host.setUnitState(QStringLiteral("reloading")));
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QCOMPARE(told(changed), QVector<bool>({true}));

    // however often it was connected, nothing of it is left with the object
    connection.reset();
    binder.removeService(Name);
    binder.kill(thing);
    QTRY_VERIFY(!other.isConnected());
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("thing died! Trying to reconnect.")));
}

void UmbraBinderConnectionTest::saysThatThereIsNoDevice()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    connection.onServiceStateChanged();

    const QString line = QStringLiteral("Could not get service manager for thing");
    QCOMPARE(takeLog(QtCriticalMsg, Category), QStringList({line, line}));
    QCOMPARE(told(changed), QVector<bool>({false}));
    QVERIFY(connection.client() == nullptr);
}

void UmbraBinderConnectionTest::findsTheDeviceWithTheNextActive()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection *connection = new UmbraBinderConnection(Name, Descriptor, Persistent);
    QCOMPARE(takeLog(QtCriticalMsg, Category).size(), 1);
    FakeBinder binder;
    binder.addService(Name);

    QVERIFY(m_host.setUnitState(QStringLiteral("reloading")));
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    QVERIFY(connection->isConnected());
    delete connection;
}

void UmbraBinderConnectionTest::tellsOfAServiceWithoutInterface()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    takeLog(QtDebugMsg);
    UmbraBinderConnection connection(Name, "", OnDemand);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    QVERIFY(connection.client() == nullptr);

    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Connected to Umbra Service thing"),
                          QStringLiteral("Could not create client for thing")}));
    QCOMPARE(told(changed), QVector<bool>({false}));
}

void UmbraBinderConnectionTest::onDemandConnectsOnlyWhenAsked()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, OnDemand);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    QCOMPARE(binder.timesOpened(), 1);
    QCOMPARE(lookups(binder), 0);

    QVERIFY(connection.client() != nullptr);

    QCOMPARE(lookups(binder), 1);
    QCOMPARE(told(changed), QVector<bool>({true}));
}

void UmbraBinderConnectionTest::onDemandHandsOutNoneForAMissingService()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    takeLog(QtDebugMsg);
    UmbraBinderConnection connection(Name, Descriptor, OnDemand);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);

    QVERIFY(connection.client() == nullptr);
    QVERIFY(connection.client() == nullptr);

    QCOMPARE(lookups(binder), 2);
    QCOMPARE(told(changed), QVector<bool>());
    QCOMPARE(takeLog(QtDebugMsg, Category).at(0),
             QStringLiteral("Could not find remote object for thing"));
}

void UmbraBinderConnectionTest::onDemandTimesOutAndConnectsAnew()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, OnDemand);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    QElapsedTimer connected;
    connected.start();
    QVERIFY(connection.client() != nullptr);
    takeLog(QtDebugMsg);

    QTimer use; // calls do not prolong it
    use.setInterval(500);
    connect(&use, &QTimer::timeout, &connection, [&] {
        if (connection.isConnected())
            connection.client();
    });
    use.start();
    QTRY_COMPARE_WITH_TIMEOUT(told(changed), QVector<bool>({true, false}), 8000);
    use.stop();
    QVERIFY(connected.elapsed() > 4500);
    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList(QStringLiteral("Timing out thing")));
    QVERIFY(!connection.isConnected());
    QVERIFY(binder.isOpen());

    QVERIFY(connection.client() != nullptr);
    QCOMPARE(told(changed), QVector<bool>({true, false, true}));
    QCOMPARE(lookups(binder), 2);
}

void UmbraBinderConnectionTest::onDemandConnectsOnRequestAfterADeath()
{
    FakeBinder binder;
    const auto before = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection connection(Name, Descriptor, OnDemand);
    QSignalSpy changed(&connection, &UmbraBinderConnection::connectionChanged);
    QVERIFY(connection.client() != nullptr);

    binder.addService(Name);
    binder.kill(before);
    QTRY_COMPARE(told(changed), QVector<bool>({true, false}));
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);
    QCOMPARE(lookups(binder), 1);

    QVERIFY(connection.client() != nullptr);
    QCOMPARE(told(changed), QVector<bool>({true, false, true}));
}

void UmbraBinderConnectionTest::persistentNeverTimesOut()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderConnection persistent(Name, Descriptor, Persistent);
    UmbraBinderConnection onDemand(Name, Descriptor, OnDemand);
    QSignalSpy timedOut(&onDemand, &UmbraBinderConnection::connectionChanged);
    QVERIFY(onDemand.client() != nullptr); // its time runs out later than the other's would

    QTRY_COMPARE_WITH_TIMEOUT(timedOut.count(), 2, 8000);

    QVERIFY(persistent.isConnected());
}

void UmbraBinderConnectionTest::givesNoClientToThoseWhoHearOfTheDisconnection()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    bool asked = false;
    bool given = false;
    UmbraBinderConnection connection(Name, Descriptor, Persistent);
    connect(&connection, &UmbraBinderConnection::connectionChanged, &connection, [&] {
        asked = true;
        given = connection.client() != nullptr;
    });

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QVERIFY(asked);
    QVERIFY(!given);
}

void UmbraBinderConnectionTest::logsItsDestruction()
{
    {
        UmbraBinderConnection connection(Name, Descriptor, Persistent);
    }
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Destroying thing connection")));
}

void UmbraBinderConnectionTest::tellsOfItsDestruction()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    auto connection = std::make_unique<UmbraBinderConnection>(Name, Descriptor, Persistent);
    QSignalSpy changed(connection.get(), &UmbraBinderConnection::connectionChanged);

    connection.reset();

    QCOMPARE(told(changed), QVector<bool>({false}));
    QVERIFY(!binder.isOpen());
}

void UmbraBinderConnectionTest::mayBeDeletedByThoseWhoHearOfTheDisconnection()
{
    FakeBinder binder;
    const auto thing = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    auto *connection = new UmbraBinderConnection(Name, Descriptor, Persistent);
    QPointer<UmbraBinderConnection> alive(connection);
    connect(connection, &UmbraBinderConnection::connectionChanged, this,
            [&] { delete std::exchange(connection, nullptr); });

    binder.removeService(Name);
    binder.kill(thing);

    QTRY_VERIFY(alive.isNull());
    QTRY_VERIFY(!binder.isOpen());
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);
}

void UmbraBinderConnectionTest::mayBeDeletedByThoseWhoHearOfTheConnection()
{
    FakeBinder binder;
    binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    auto *connection = new UmbraBinderConnection(Name, Descriptor, OnDemand);
    UmbraBinderConnection *called = connection;
    connect(connection, &UmbraBinderConnection::connectionChanged, this,
            [&] { delete std::exchange(connection, nullptr); });

    QVERIFY(called->client() == nullptr);

    QVERIFY(connection == nullptr);
    QTRY_VERIFY(!binder.isOpen());
}

void UmbraBinderConnectionTest::mayBeDeletedInsideItsOwnCall()
{
    FakeBinder binder;
    const auto thing = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    auto connection = std::make_unique<UmbraBinderConnection>(Name, Descriptor, Persistent);
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    const auto caller = manager->createLocalObject(
        "test.ICaller", [&](Binder::IncomingRequest &, quint32, quint32, Binder::Status *) {
            connection.reset();
            return std::unique_ptr<Binder::OutgoingReply>();
        });
    thing->setHandler([&](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 1,
            FakeParcel().token(QStringLiteral("test.ICaller"), {0}),
            [](const FakeAnswer &) { return FakeReply::data(FakeParcel().int32(42)); });
    });

    const auto client = connection->client();
    const auto request = client->createRequest();
    request->writer().appendLocalObject(caller.get());
    const auto reply = client->transact(1, *request);

    QVERIFY(connection == nullptr);
    QVERIFY(reply != nullptr);
    qint32 value = 0;
    QVERIFY(reply->readInt32(&value));
    QCOMPARE(value, 42);
}

void UmbraBinderConnectionTest::mayEndWhileTheServiceManagerIsAsked()
{
    FakeBinder binder;
    const auto thing = binder.addService(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    auto connection = std::make_unique<UmbraBinderConnection>(Name, Descriptor, OnDemand);
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    const auto nested = manager->createLocalObject(
        "test.ICaller", [&](Binder::IncomingRequest &, quint32, quint32, Binder::Status *) {
            connection.reset();
            return std::unique_ptr<Binder::OutgoingReply>();
        });
    const auto name = manager->registerName("caller", *nested);
    const quint64 object = binder.registeredObject("caller");
    QVERIFY(object != 0);
    binder.contextManager()->setHandler([&](const FakeTransaction &) {
        return FakeReply::afterCall(
            object, 1, FakeParcel().token(QStringLiteral("test.ICaller"), {0}),
            [&](const FakeAnswer &) { return FakeReply::data(FakeParcel().object(thing)); });
    });

    UmbraBinderConnection *called = connection.get();
    QVERIFY(called->client() == nullptr);

    QVERIFY(connection == nullptr);
}

QTEST_GUILESS_MAIN(UmbraBinderConnectionTest)
#include "tst_umbrabinderconnection.moc"
