#include "binder/intentcodec.h"
#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"
#include "runtime/umbraactivitymanager.h"

#include <QtTest>

using RuntimeLevel::code;
using RuntimeLevel::levelLines;
using RuntimeLevel::sdk;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");
const QString Package = QStringLiteral("a.b");

FakeParcel activityToken()
{
    return RuntimeLevel::token("android.app.IActivityManager");
}

QByteArray nullObject()
{
    return QByteArray::fromHex("852a627313010000 0000000000000000 0000000000000000");
}

QByteArray emptyString()
{
    return QByteArray::fromHex("00000000 00000000");
}

/// Bytes that are there only at levels at which intents have an identifier.
QByteArray identifier(const char *hex)
{
    return sdk() >= 29 ? QByteArray::fromHex(hex) : QByteArray();
}

} // namespace

class UmbraActivityManagerTest : public RuntimeClientTest<UmbraActivityManager>
{
    Q_OBJECT

public:
    UmbraActivityManagerTest()
        : RuntimeClientTest("activity")
    {
    }

private Q_SLOTS:
    void isConnectedToTheActivityService();
    void startsActivities();
    void startsActivitiesWithoutAType();
    void sendsEmptyTypesAsTheyStand();
    void forceStopsPackages();
    void takesAnyAnswer_data();
    void takesAnyAnswer();
    void sendsNothingWithoutAConnection();
    void survivesARuntimeThatDiesMeanwhile();

private:
};

void UmbraActivityManagerTest::isConnectedToTheActivityService()
{
    QCOMPARE(m_client->name(), "activity");
    QVERIFY(m_client->isConnected()); // without being asked to: it is persistent
}

void UmbraActivityManagerTest::startsActivities()
{
    Intent intent;
    intent.action = QStringLiteral("v");
    intent.data = QUrl(QStringLiteral("a:b"));
    intent.type = QStringLiteral("t/x");
    intent.identifier = QStringLiteral("i");
    intent.flags = 0x10000000;
    intent.componentPackage = Package;
    intent.componentClass = QStringLiteral("C");

    m_client->startActivity(intent);

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().code, code(3, 6, 7, 7));
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().offsets.size(), std::size_t(0));
    QCOMPARE(calls.front().data, activityToken()
                                     .raw(nullObject())
                                     .raw(emptyString())
                                     .int32(1)
                                     .string16(intent.action)
                                     .int32(1)
                                     .string16(QStringLiteral("a:b"))
                                     .string16(intent.type)
                                     .raw(identifier("01000000 69000000"))
                                     .int32(0x10000000)
                                     .int32(-1)
                                     .string16(Package)
                                     .string16(QStringLiteral("C"))
                                     .int32(0)  // bounds
                                     .int32(0)  // categories
                                     .int32(0)  // selector
                                     .int32(0)  // clip data
                                     .int32(-2) // user hint
                                     .int32(-1) // extras
                                     .string16(intent.type)
                                     .raw(nullObject())
                                     .raw(emptyString())
                                     .int32(0)
                                     .int32(0)
                                     .int32(0)
                                     .int32(0)
                                     .data());
}

void UmbraActivityManagerTest::startsActivitiesWithoutAType()
{
    m_client->startActivity(Intent());

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    QCOMPARE(m_service->takeTransactions().front().data,
             activityToken()
                 .raw(nullObject())
                 .raw(emptyString())
                 .int32(1)
                 .raw(QByteArray::fromHex("ffffffff 00000000 ffffffff"))
                 .raw(identifier("ffffffff"))
                 .raw(QByteArray::fromHex("00000000 ffffffff ffffffff 00000000 00000000 00000000 "
                                          "00000000 feffffff ffffffff"))
                 .int32(-1) // no resolved type
                 .raw(nullObject())
                 .raw(emptyString())
                 .raw(QByteArray(16, '\0'))
                 .data());
}

void UmbraActivityManagerTest::sendsEmptyTypesAsTheyStand()
{
    Intent intent;
    intent.type = QStringLiteral("");

    m_client->startActivity(intent);

    takeLog(QtCriticalMsg, Category);
    QVERIFY(m_service->takeTransactions().front().data.endsWith(
        emptyString() + nullObject() + emptyString() + QByteArray(16, '\0')));
}

void UmbraActivityManagerTest::forceStopsPackages()
{
    m_client->forceStopPackage(Package);

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().code, code(72, 77, 68, 68));
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().data, activityToken().string16(Package).int32(0).data());
}

void UmbraActivityManagerTest::takesAnyAnswer_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("refused") << -74 << QByteArray();
    QTest::newRow("positive status") << 7 << QByteArray();
    QTest::newRow("nothing") << 0 << QByteArray();
    QTest::newRow("exception") << 0 << QByteArray::fromHex("ffffffff 02000000 6e006f00 00000000");
    QTest::newRow("not started") << 0 << QByteArray::fromHex("00000000 a4ffffff");
}

void UmbraActivityManagerTest::takesAnyAnswer()
{
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    m_service->setHandler([&](const FakeTransaction &) {
        return status == 0 ? FakeReply::data(FakeParcel(answer)) : FakeReply::statusCode(status);
    });

    m_client->startActivity(Intent());
    m_client->forceStopPackage(Package);

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines() + levelLines());
    QCOMPARE(m_service->takeTransactions().size(), std::size_t(2));
}

void UmbraActivityManagerTest::sendsNothingWithoutAConnection()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    const std::size_t before = m_service->transactions().size();

    m_client->startActivity(Intent());
    m_client->forceStopPackage(Package);

    QCOMPARE(m_service->transactions().size(), before);
    QCOMPARE(takeLog(QtCriticalMsg), QStringList());
}

void UmbraActivityManagerTest::survivesARuntimeThatDiesMeanwhile()
{
    m_service->setHandler([](const FakeTransaction &) { return FakeReply::dead(); });
    const auto after = std::make_shared<FakeObject>();
    m_binder->setService("activity", after);

    QSignalSpy changed(m_client.get(), &UmbraBinderConnection::connectionChanged);
    m_client->forceStopPackage(Package);
    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    m_binder->kill(m_service);
    QTRY_COMPARE(changed.count(), 2);
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);

    m_client->forceStopPackage(Package);
    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    QCOMPARE(after->takeTransactions().size(), std::size_t(1));
}

QTEST_GUILESS_MAIN(UmbraActivityManagerTest)
#include "tst_umbraactivitymanager.moc"
