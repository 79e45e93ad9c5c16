#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "platform/binder/servicemanager.h"
#include "runtime/umbraservicemonitor.h"
#include "support/testcase.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QtTest>

#include <utility>

namespace {

constexpr char Service[] = "umbra";

FakeParcel token()
{
    return FakeParcel().token(QStringLiteral("umbra.applications.IUmbraService"), {0x00400000});
}

FakeParcel listenerToken()
{
    return FakeParcel().token(QStringLiteral("umbra.applications.IUmbraServiceListener"), {0});
}

/// The bytes that refer to an object of the process under test.
QByteArray ownObject(quint64 id)
{
    return FakeParcel()
        .raw(QByteArray::fromHex("852a627313010000"))
        .int64(qint64(id))
        .int64(qint64(id))
        .data();
}

} // namespace

/// The process has one monitor, which is never destroyed, and with it one device.
class UmbraServiceMonitorTest : public TestCase
{
    Q_OBJECT

public Q_SLOTS:
    void onAppClosed(const QDBusMessage &signal) { m_closed.append(signal.arguments()); }

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void isOneForTheProcess();
    void registersItsListenerWhenItConnects();
    void registersOneNewListenerWhenTheRuntimeRestarts();
    void registersOneNewListenerAfterADeath();
    void keepsItsListenerWhileItIsDisconnected();
    void saysThatTheListenerWasRefused();
    void announcesClosedApps_data();
    void announcesClosedApps();
    void ignoresOtherReports();
    void ignoresReportsForAnotherInterface_data();
    void ignoresReportsForAnotherInterface();
    void launchesPackages();
    void installsWithAnObserver();
    void installsWithoutAnObserver();
    void reportsWhetherTheRuntimeAccepts_data();
    void reportsWhetherTheRuntimeAccepts();
    void sendsNothingWithoutAConnection();

private:
    quint64 listener() const;
    /// Sends one report that is announced and waits for it: whatever was sent before has been
    /// served.
    void fence();

    RuntimeHost m_host;
    FakeBinder *m_binder = nullptr;
    std::shared_ptr<FakeObject> m_service;
    QList<QVariantList> m_closed;
};

void UmbraServiceMonitorTest::initTestCase()
{
    QVERIFY(m_host.start());
    m_binder = new FakeBinder; // never destroyed, because the monitor's listener keeps the file
    QVERIFY(QDBusConnection::systemBus().connect(
        QString(), QStringLiteral("/com/corvo/bramd"), QStringLiteral("com.corvo.bramd"),
        QStringLiteral("appClosed"), QStringLiteral("s"), this, SLOT(onAppClosed(QDBusMessage))));
}

void UmbraServiceMonitorTest::init()
{
    TestCase::init();
    UmbraServiceMonitor::instance();
    m_closed.clear();
    m_service = m_binder->addService(Service);
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QVERIFY(UmbraServiceMonitor::instance()->isConnected());
}

void UmbraServiceMonitorTest::cleanup()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    QVERIFY(m_host.setUnitState(QStringLiteral("inactive")));
    TestCase::cleanup();
}

quint64 UmbraServiceMonitorTest::listener() const
{
    return m_service->transactions().back().sentObjects().front();
}

void UmbraServiceMonitorTest::fence()
{
    m_binder->call(listener(), 1, listenerToken().string16(QStringLiteral("fence")),
                   Binder::FlagOneWay);
    QTRY_VERIFY(m_closed.contains(QVariantList({QStringLiteral("fence")})));
    m_closed.removeOne(QVariantList({QStringLiteral("fence")}));
}

void UmbraServiceMonitorTest::isOneForTheProcess()
{
    QCOMPARE(UmbraServiceMonitor::instance(), UmbraServiceMonitor::instance());
    QCOMPARE(UmbraServiceMonitor::instance()->parent(), nullptr);
    QCOMPARE(UmbraServiceMonitor::instance()->name(), "umbra");
}

void UmbraServiceMonitorTest::registersItsListenerWhenItConnects()
{
    QCOMPARE(m_service->transactions().size(), std::size_t(1));
    const FakeTransaction &call = m_service->transactions().front();
    QCOMPARE(call.code, 15U);
    QVERIFY(!call.isOneWay());
    QCOMPARE(call.data, token().raw(ownObject(listener())).data());
}

void UmbraServiceMonitorTest::registersOneNewListenerWhenTheRuntimeRestarts()
{
    const quint64 before = listener();
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    QCOMPARE(m_service->takeTransactions().size(), std::size_t(1));

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    QCOMPARE(m_service->transactions().size(), std::size_t(1));
    QCOMPARE(m_service->transactions().front().code, 15U);
    QVERIFY(listener() != before);
}

void UmbraServiceMonitorTest::registersOneNewListenerAfterADeath()
{
    const auto before = std::exchange(m_service, m_binder->addService(Service));

    m_binder->kill(before);

    QTRY_COMPARE(m_service->transactions().size(), std::size_t(1));
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
    QCOMPARE(before->transactions().size(), std::size_t(1));
    QCOMPARE(m_service->transactions().front().code, 15U);
}

void UmbraServiceMonitorTest::keepsItsListenerWhileItIsDisconnected()
{
    const quint64 object = listener();
    m_binder->removeService(Service);
    m_binder->kill(m_service);
    QTRY_VERIFY(!UmbraServiceMonitor::instance()->isConnected());
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);

    m_binder->call(object, 1, listenerToken().string16(QStringLiteral("a.b")), Binder::FlagOneWay);

    QTRY_COMPARE(m_closed, QList<QVariantList>({{QStringLiteral("a.b")}}));
}

void UmbraServiceMonitorTest::saysThatTheListenerWasRefused()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    m_service->setReply(15, FakeReply::statusCode(-1));

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    QCOMPARE(takeLog(QtCriticalMsg, QStringLiteral("default")),
             QStringList(QStringLiteral("Failed to set listener for umbra service")));
    QVERIFY(UmbraServiceMonitor::instance()->isConnected());
}

void UmbraServiceMonitorTest::announcesClosedApps_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("announced");

    QTest::newRow("a name") << QStringLiteral("com.example.app")
                            << QStringLiteral("com.example.app");
    QTest::newRow("an empty name") << QStringLiteral("") << QStringLiteral("");
    QTest::newRow("no name") << QString() << QStringLiteral("");
}

void UmbraServiceMonitorTest::announcesClosedApps()
{
    QFETCH(QString, name);
    QFETCH(QString, announced);

    m_binder->call(listener(), 1, listenerToken().string16(name), Binder::FlagOneWay);

    QTRY_COMPARE(m_closed, QList<QVariantList>({{announced}}));
}

void UmbraServiceMonitorTest::ignoresOtherReports()
{
    m_binder->call(listener(), 2, listenerToken().string16(QStringLiteral("a.b")),
                   Binder::FlagOneWay);
    const auto answer =
        m_binder->call(listener(), 2, listenerToken().string16(QStringLiteral("a.b")));
    fence();

    QCOMPARE(m_closed, QList<QVariantList>());
    QTRY_COMPARE(answer->count, 1); // a caller that waits is released, with nothing
    QCOMPARE(answer->status, 0);
    QCOMPARE(answer->data, QByteArray());
}

void UmbraServiceMonitorTest::ignoresReportsForAnotherInterface_data()
{
    QTest::addColumn<QByteArray>("request");

    QTest::newRow("another interface")
        << FakeParcel()
               .token(QStringLiteral("umbra.applications.IUmbraService"), {0})
               .string16(QStringLiteral("a.b"))
               .data();
    QTest::newRow("no interface") << QByteArray();
}

void UmbraServiceMonitorTest::ignoresReportsForAnotherInterface()
{
    QFETCH(QByteArray, request);

    m_binder->call(listener(), 1, FakeParcel(request), Binder::FlagOneWay);
    fence();

    QCOMPARE(m_closed, QList<QVariantList>());
}

void UmbraServiceMonitorTest::launchesPackages()
{
    m_service->takeTransactions();

    UmbraServiceMonitor::instance()->launchPackage(QStringLiteral("a.b"));

    QCOMPARE(m_service->transactions().size(), std::size_t(1));
    const FakeTransaction &call = m_service->transactions().front();
    QCOMPARE(call.code, 1U);
    QVERIFY(!call.isOneWay());
    QCOMPARE(call.data, token().string16(QStringLiteral("a.b")).data());
}

void UmbraServiceMonitorTest::installsWithAnObserver()
{
    m_service->takeTransactions();
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    const auto observer = manager->createLocalObject(
        "test.IObserver", [](Binder::IncomingRequest &, quint32, quint32, Binder::Status *) {
            return std::unique_ptr<Binder::OutgoingReply>();
        });

    UmbraServiceMonitor::instance()->installPackage(QStringLiteral("/a.apk"), observer.get());

    QCOMPARE(m_service->transactions().size(), std::size_t(1));
    const FakeTransaction &call = m_service->transactions().front();
    QCOMPARE(call.code, 2U);
    QVERIFY(!call.isOneWay());
    QCOMPARE(call.data,
             token().string16(QStringLiteral("/a.apk")).raw(ownObject(observer->id())).data());
    QCOMPARE(call.sentObjects(), std::vector<quint64>({observer->id()}));
}

void UmbraServiceMonitorTest::installsWithoutAnObserver()
{
    m_service->takeTransactions();

    UmbraServiceMonitor::instance()->installPackage(QStringLiteral("/a.apk"), nullptr);

    QCOMPARE(m_service->transactions().front().data,
             token().string16(QStringLiteral("/a.apk")).raw(ownObject(0)).data());
    QCOMPARE(m_service->transactions().front().offsets, std::vector<quint64>());
}

void UmbraServiceMonitorTest::reportsWhetherTheRuntimeAccepts_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("1") << FakeParcel().int32(1).data() << true;
    QTest::newRow("another number") << FakeParcel().int32(-7).data() << true;
    QTest::newRow("0") << FakeParcel().int32(0).data() << false;
    QTest::newRow("nothing") << QByteArray() << false;
}

void UmbraServiceMonitorTest::reportsWhetherTheRuntimeAccepts()
{
    QFETCH(QByteArray, answer);
    m_service->setReply(2, FakeReply::data(FakeParcel(answer)));

    QTEST(UmbraServiceMonitor::instance()->installPackage(QStringLiteral("/a.apk"), nullptr),
          "accepted");
}

void UmbraServiceMonitorTest::sendsNothingWithoutAConnection()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    m_service->takeTransactions();

    UmbraServiceMonitor::instance()->launchPackage(QStringLiteral("a.b"));
    QCOMPARE(UmbraServiceMonitor::instance()->installPackage(QStringLiteral("/a.apk"), nullptr),
             false);

    QCOMPARE(m_service->transactions().size(), std::size_t(0));
}

QTEST_GUILESS_MAIN(UmbraServiceMonitorTest)
#include "tst_umbraservicemonitor.moc"
