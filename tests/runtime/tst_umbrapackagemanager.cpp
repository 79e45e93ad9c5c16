#include "config/daemonconfig.h"
#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"
#include "runtime/umbrapackagemanager.h"
#include "runtime/umbraservicemonitor.h"

#include <QtTest>

#include <utility>

using RuntimeLevel::code;
using RuntimeLevel::levelLines;
using RuntimeLevel::sdk;
using RuntimeLevel::token;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");
constexpr char InstallObserver[] = "android.content.pm.IPackageInstallObserver2";
constexpr char DeleteObserver[] = "android.content.pm.IPackageDeleteObserver";
const QString Package = QStringLiteral("a.b");
const QString Path = QStringLiteral("/data/a.apk");

constexpr bool WithObserver = false;
constexpr bool NoObserver = true;

FakeParcel packageToken()
{
    return token("android.content.pm.IPackageManager");
}

/// The bytes that refer to an object of the process under test; 0 for the null object.
QByteArray ownObject(quint64 id)
{
    const qint64 number = static_cast<qint64>(id);
    return FakeParcel()
        .raw(QByteArray::fromHex("852a627313010000"))
        .int64(number)
        .int64(number)
        .data();
}

} // namespace

class UmbraPackageManagerTest : public RuntimeClientTest<UmbraPackageManager>
{
    Q_OBJECT

public:
    UmbraPackageManagerTest()
        : RuntimeClientTest("package")
    {
    }

protected Q_SLOTS:
    void init();

private Q_SLOTS:
    void findsTheLevelUnderTest();
    void deletesPackages();
    void deletesPackagesWithoutAnObserver();
    void deletesCacheFiles();
    void clearsUserData();
    void looksUpUids_data();
    void looksUpUids();
    void findsNoUidInARefusal();
    void installsByTheRouteOfTheLevel();
    void installsWithoutAnObserver();
    void sendsNothingWithoutAConnection();
    void installsNothingWithoutAConnectionOfItsOwn();
    void reportsInstallResults_data();
    void reportsInstallResults();
    void reportsThatTheUserWouldHaveToAct();
    void reportsDeleteResults_data();
    void reportsDeleteResults();
    void sendsNoReplyData();
    void warnsOfUnknownCalls_data();
    void warnsOfUnknownCalls();
    void ignoresCallsForOtherInterfaces();
    void notesCallsWithoutInterface();
    void survivesShortAndHostileResults_data();
    void survivesShortAndHostileResults();
    void hasNewObserversAfterAReconnection();
    void hearsOldObserversWhenTheConnectionIsMadeAnew();
    void hasObserversWhenMadeWhileTheRuntimeIsUp();

private:
    void setUp() override;
    /// The transactions that "package" got, after checking what was logged about the level.
    FakeTransaction onlyCall();
    quint64 installObserver();
    quint64 deleteObserver();

    std::shared_ptr<FakeObject> m_umbra;
};

void UmbraPackageManagerTest::setUp()
{
    RuntimeClientTest::setUp();
    m_umbra = m_binder->addService("umbra");
    UmbraServiceMonitor::instance();
}

void UmbraPackageManagerTest::init()
{
    RuntimeClientTest::init();
    QVERIFY(m_client->isConnected());
    QVERIFY(UmbraServiceMonitor::instance()->isConnected());
    m_umbra->takeTransactions(); // the monitor's listener
    takeLog(QtDebugMsg);
}

FakeTransaction UmbraPackageManagerTest::onlyCall()
{
    const QStringList logged = takeLog(QtCriticalMsg, Category);
    const auto calls = m_service->takeTransactions();
    if (logged != levelLines() || calls.size() != 1 || calls.front().isOneWay())
        return FakeTransaction();
    return calls.front();
}

quint64 UmbraPackageManagerTest::installObserver()
{
    m_client->installPackage(Path, WithObserver);
    const auto calls = sdk() == 27 ? m_service->takeTransactions() : m_umbra->takeTransactions();
    return calls.back().sentObjects().front();
}

quint64 UmbraPackageManagerTest::deleteObserver()
{
    m_client->deletePackage(Package, WithObserver);
    takeLog(QtCriticalMsg, Category);
    return m_service->takeTransactions().back().sentObjects().front();
}

void UmbraPackageManagerTest::findsTheLevelUnderTest()
{
    QCOMPARE(DaemonConfig::androidSdkVersion(), sdk());
    QCOMPARE(m_client->name(), "package");
}

void UmbraPackageManagerTest::deletesPackages()
{
    m_client->deletePackage(Package, WithObserver);

    const FakeTransaction call = onlyCall();
    QCOMPARE(call.code, code(64, 63, 66, 66));
    QCOMPARE(call.sentObjects().size(), std::size_t(1));
    QCOMPARE(call.data, packageToken()
                            .string16(Package)
                            .int32(-1)
                            .raw(ownObject(call.sentObjects().front()))
                            .int32(0)
                            .int32(2)
                            .data());
}

void UmbraPackageManagerTest::deletesPackagesWithoutAnObserver()
{
    m_client->deletePackage(Package, NoObserver);

    const FakeTransaction call = onlyCall();
    QCOMPARE(call.code, code(64, 63, 66, 66));
    QCOMPARE(call.data,
             packageToken().string16(Package).int32(-1).raw(ownObject(0)).int32(0).int32(2).data());
}

void UmbraPackageManagerTest::deletesCacheFiles()
{
    m_client->deleteApplicationCacheFiles(Package);

    const FakeTransaction call = onlyCall();
    QCOMPARE(call.code, code(100, 100, 103, 103));
    QCOMPARE(call.data, packageToken().string16(Package).int32(0).raw(ownObject(0)).data());
}

void UmbraPackageManagerTest::clearsUserData()
{
    m_client->clearApplicationUserData(Package);

    const FakeTransaction call = onlyCall();
    QCOMPARE(call.code, code(101, 101, 104, 104));
    QCOMPARE(call.data, packageToken().string16(Package).raw(ownObject(0)).int32(0).data());
}

void UmbraPackageManagerTest::looksUpUids_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("uid");

    QTest::newRow("installed") << FakeParcel().int32(0).int32(10050).data() << 10050;
    QTest::newRow("not installed") << FakeParcel().int32(0).int32(-1).data() << -1;
    QTest::newRow("exception") << FakeParcel().int32(-1).int32(10050).data() << -1;
    QTest::newRow("status without a uid") << FakeParcel().int32(0).data() << -1;
    QTest::newRow("nothing") << QByteArray() << -1;
}

void UmbraPackageManagerTest::looksUpUids()
{
    QFETCH(QByteArray, answer);
    m_service->setReply(5, FakeReply::data(FakeParcel(answer)));

    QTEST(m_client->getPackageUid(Package, 0x40), "uid");

    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().data, packageToken().string16(Package).int32(0x40).int32(0).data());
}

void UmbraPackageManagerTest::findsNoUidInARefusal()
{
    m_service->setReply(5, FakeReply::statusCode(-74));

    QCOMPARE(m_client->getPackageUid(Package, 0), -1);
}

void UmbraPackageManagerTest::installsByTheRouteOfTheLevel()
{
    m_client->installPackage(Path, WithObserver);

    const auto direct = m_service->takeTransactions();
    const auto byService = m_umbra->takeTransactions();
    if (sdk() == 27) {
        QCOMPARE(byService.size(), std::size_t(0));
        QCOMPARE(direct.size(), std::size_t(1));
        QCOMPARE(direct.front().code, 60U);
        QVERIFY(!direct.front().isOneWay());
        QCOMPARE(direct.front().sentObjects().size(), std::size_t(1));
        QCOMPARE(direct.front().data, packageToken()
                                          .string16(Path)
                                          .raw(ownObject(direct.front().sentObjects().front()))
                                          .int32(66)
                                          .string16(QString())
                                          .int32(0)
                                          .data());
    } else {
        QCOMPARE(direct.size(), std::size_t(0));
        QCOMPARE(byService.size(), std::size_t(1));
        QCOMPARE(byService.front().code, 2U);
        QCOMPARE(byService.front().sentObjects().size(), std::size_t(1));
        QCOMPARE(byService.front().data,
                 token("umbra.applications.IUmbraService")
                     .string16(Path)
                     .raw(ownObject(byService.front().sentObjects().front()))
                     .data());
    }
}

void UmbraPackageManagerTest::installsWithoutAnObserver()
{
    m_client->installPackage(Path, NoObserver);

    if (sdk() == 27) {
        QCOMPARE(m_service->takeTransactions().front().data, packageToken()
                                                                 .string16(Path)
                                                                 .raw(ownObject(0))
                                                                 .int32(66)
                                                                 .string16(QString())
                                                                 .int32(0)
                                                                 .data());
    } else {
        QCOMPARE(m_umbra->takeTransactions().front().data,
                 token("umbra.applications.IUmbraService").string16(Path).raw(ownObject(0)).data());
    }
}

void UmbraPackageManagerTest::sendsNothingWithoutAConnection()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    m_client->installPackage(Path, WithObserver);
    m_client->deletePackage(Package, WithObserver);
    m_client->deleteApplicationCacheFiles(Package);
    m_client->clearApplicationUserData(Package);
    QCOMPARE(m_client->getPackageUid(Package, 0), -1);

    QCOMPARE(m_service->transactions().size(), std::size_t(0));
    QCOMPARE(m_umbra->transactions().size(), std::size_t(0));
    QCOMPARE(takeLog(QtCriticalMsg), QStringList());
}

void UmbraPackageManagerTest::installsNothingWithoutAConnectionOfItsOwn()
{
    m_binder->removeService("package");
    m_binder->kill(m_service);
    QTRY_VERIFY(!m_client->isConnected());
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);

    m_client->installPackage(Path, WithObserver);

    QCOMPARE(m_umbra->transactions().size(), std::size_t(0));
}

void UmbraPackageManagerTest::reportsInstallResults_data()
{
    QTest::addColumn<int>("returnCode");
    QTest::addColumn<QString>("msg");
    QTest::addColumn<bool>("success");
    QTest::addColumn<QString>("text");

    QTest::newRow("success") << 1 << QStringLiteral("") << true << QStringLiteral("");
    QTest::newRow("success without a message") << 1 << QString() << true << QString();
    QTest::newRow("success with a message")
        << 1 << QStringLiteral("Fine") << true << QStringLiteral("Fine");
    QTest::newRow("no storage") << -4 << QStringLiteral("") << false
                                << QStringLiteral("bramd-install-fail-storage");
    QTest::newRow("no storage, no message")
        << -4 << QString() << false << QStringLiteral("bramd-install-fail-storage");
    QTest::newRow("the runtime's own words")
        << -4 << QStringLiteral("Full!") << false << QStringLiteral("Full!");
    QTest::newRow("a code without a text of its own")
        << -110 << QStringLiteral("") << false << QStringLiteral("bramd-install-fail-other");
    QTest::newRow("an unknown positive code")
        << 2 << QStringLiteral("") << false << QStringLiteral("bramd-install-fail-other");
    QTest::newRow("aborted") << -115 << QStringLiteral("") << false << QStringLiteral("Aborted");
}

void UmbraPackageManagerTest::reportsInstallResults()
{
    QFETCH(int, returnCode);
    QFETCH(QString, msg);
    QFETCH(bool, success);
    QFETCH(QString, text);
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);

    const FakeParcel extras =
        FakeParcel().int32(1).raw(QByteArray::fromHex("04000000424e444c00000000"));
    m_binder->call(
        installObserver(), 2,
        token(InstallObserver).string16(Package).int32(returnCode).string16(msg).raw(extras.data()),
        Binder::FlagOneWay);

    QTRY_COMPARE(results.count(), 1);
    QCOMPARE(results.first(), QVariantList({success, Package, text}));
    QVERIFY(
        takeLogLine(QtDebugMsg, QStringLiteral("Package install result %1 for \"a.b\" ( \"%2\" )")
                                    .arg(returnCode)
                                    .arg(msg)));
}

void UmbraPackageManagerTest::reportsThatTheUserWouldHaveToAct()
{
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);

    m_binder->call(installObserver(), 1, token(InstallObserver), Binder::FlagOneWay);

    QTRY_COMPARE(results.count(), 1);
    QCOMPARE(results.first(),
             QVariantList({false, QString(), QStringLiteral("Package installation failed")}));
}

void UmbraPackageManagerTest::reportsDeleteResults_data()
{
    QTest::addColumn<int>("returnCode");
    QTest::addColumn<bool>("success");

    QTest::newRow("success") << 1 << true;
    QTest::newRow("failure") << -1 << false;
    QTest::newRow("zero") << 0 << false;
    QTest::newRow("another positive code") << 2 << false;
}

void UmbraPackageManagerTest::reportsDeleteResults()
{
    QFETCH(int, returnCode);
    QFETCH(bool, success);
    QSignalSpy results(m_client.get(), &UmbraPackageManager::uninstallationResultReceived);

    m_binder->call(deleteObserver(), 1, token(DeleteObserver).string16(Package).int32(returnCode),
                   Binder::FlagOneWay);

    QTRY_COMPARE(results.count(), 1);
    QCOMPARE(results.first(), QVariantList({success, Package}));
}

void UmbraPackageManagerTest::sendsNoReplyData()
{
    const auto answer =
        m_binder->call(deleteObserver(), 1, token(DeleteObserver).string16(Package).int32(1));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 0);
    QCOMPARE(answer->data, QByteArray());
}

void UmbraPackageManagerTest::warnsOfUnknownCalls_data()
{
    QTest::addColumn<QByteArray>("interface");
    QTest::addColumn<uint>("code");

    QTest::newRow("install observer") << QByteArray(InstallObserver) << 3U;
    QTest::newRow("delete observer") << QByteArray(DeleteObserver) << 3U;
    QTest::newRow("delete observer, a code of the other one") << QByteArray(DeleteObserver) << 2U;
    QTest::newRow("above the signed numbers") << QByteArray(InstallObserver) << 4000000000U;
}

void UmbraPackageManagerTest::warnsOfUnknownCalls()
{
    QFETCH(QByteArray, interface);
    QFETCH(uint, code);
    const quint64 observer = interface == InstallObserver ? installObserver() : deleteObserver();

    const auto answer = m_binder->call(observer, code, token(interface.constData()));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("Unknown binder call ( %1 )").arg(code)));
}

void UmbraPackageManagerTest::ignoresCallsForOtherInterfaces()
{
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);

    const auto answer = m_binder->call(installObserver(), 1, token("test.IOther"));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(results.count(), 0);
}

void UmbraPackageManagerTest::notesCallsWithoutInterface()
{
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);

    const auto answer = m_binder->call(installObserver(), 1, FakeParcel());

    QTRY_COMPARE(answer->count, 1);
    QVERIFY(takeLogLine(QtDebugMsg, QStringLiteral("bramd - installation event - no interface?")));
    QCOMPARE(results.count(), 0);
}

void UmbraPackageManagerTest::survivesShortAndHostileResults_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<QVariantList>("result");
    QTest::addColumn<QString>("critical");

    const QString other = QStringLiteral("bramd-install-fail-other");
    QTest::newRow("no fields") << QByteArray()
                               << QVariantList({false, QString(),
                                                QStringLiteral("bramd-install-fail-conflict")})
                               << QString();
    QTest::newRow("only a name") << FakeParcel().string16(Package).data()
                                 << QVariantList({false, Package,
                                                  QStringLiteral("bramd-install-fail-conflict")})
                                 << QString();
    QTest::newRow("a name longer than the message")
        << FakeParcel().int32(1000).data() << QVariantList({false, QString(), other}) << QString();
    QTest::newRow("a count that the extras cannot hold")
        << FakeParcel()
               .string16(Package)
               .int32(1)
               .string16(QString())
               .int32(1)
               .raw(QByteArray::fromHex("04000000424e444cffffff7f"))
               .data()
        << QVariantList({true, Package, QString()})
        << QStringLiteral("Count is larger than the message: 2147483647");
}

void UmbraPackageManagerTest::survivesShortAndHostileResults()
{
    QFETCH(QByteArray, fields);
    QFETCH(QVariantList, result);
    QFETCH(QString, critical);
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);

    m_binder->call(installObserver(), 2, token(InstallObserver).raw(fields), Binder::FlagOneWay);

    QTRY_COMPARE(results.count(), 1);
    QCOMPARE(results.first(), result);
    QCOMPARE(takeLog(QtCriticalMsg), critical.isNull() ? QStringList() : QStringList(critical));
}

void UmbraPackageManagerTest::hasNewObserversAfterAReconnection()
{
    const quint64 install = installObserver();
    const quint64 remove = deleteObserver();
    const auto before = std::exchange(m_service, m_binder->addService("package"));
    QSignalSpy changed(m_client.get(), &UmbraBinderConnection::connectionChanged);

    m_binder->kill(before);
    QTRY_COMPARE(changed.count(), 2);
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);

    QVERIFY(installObserver() != install);
    QVERIFY(deleteObserver() != remove);
    const auto answer = m_binder->call(install, 1, token(InstallObserver)); // it was dropped
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, -32);
}

void UmbraPackageManagerTest::hearsOldObserversWhenTheConnectionIsMadeAnew()
{
    const quint64 before = installObserver();
    QVERIFY(m_host.setUnitState(QStringLiteral("reloading")));
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QSignalSpy results(m_client.get(), &UmbraPackageManager::installationResultReceived);
    const quint64 after = installObserver();
    QVERIFY(after != before);

    m_binder->call(before, 1, token(InstallObserver), Binder::FlagOneWay);
    QTRY_COMPARE(results.count(), 1);
    m_binder->call(after, 1, token(InstallObserver), Binder::FlagOneWay);
    QTRY_COMPARE(results.count(), 2);
}

void UmbraPackageManagerTest::hasObserversWhenMadeWhileTheRuntimeIsUp()
{
    UmbraPackageManager second;

    second.deletePackage(Package, WithObserver);
    takeLog(QtCriticalMsg, Category);

    QCOMPARE(m_service->takeTransactions().back().sentObjects().size(), std::size_t(1));
}

QTEST_GUILESS_MAIN(UmbraPackageManagerTest)
#include "tst_umbrapackagemanager.moc"
