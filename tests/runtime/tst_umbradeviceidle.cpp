#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"
#include "runtime/umbradeviceidle.h"

#include <QtTest>

using RuntimeLevel::code;
using RuntimeLevel::levelLines;
using RuntimeLevel::sdk;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");
const QString Package = QStringLiteral("a.b");
const QString SettingFailed = QStringLiteral("PowerSaveWhitelist setting for \"a.b\" failed");
const QString CheckFailed = QStringLiteral("PowerSaveWhitelist check for \"a.b\" failed");

QByteArray requestBytes()
{
    return RuntimeLevel::token("android.os.IDeviceIdleController").string16(Package).data();
}

} // namespace

class UmbraDeviceIdleTest : public RuntimeClientTest<UmbraDeviceIdle>
{
    Q_OBJECT

public:
    UmbraDeviceIdleTest()
        : RuntimeClientTest("deviceidle")
    {
    }

private Q_SLOTS:
    void isConnectedOnDemand();
    void addsAndRemoves_data();
    void addsAndRemoves();
    void saysThatASettingFailed_data();
    void saysThatASettingFailed();
    void takesAnyAnswerToASetting();
    void asksWhetherAPackageIsListed();
    void takesOnlyOneForTrue_data();
    void takesOnlyOneForTrue();
    void saysThatACheckFailed_data();
    void saysThatACheckFailed();
    void sendsNothingWithoutAConnection_data();
    void sendsNothingWithoutAConnection();

private:
};

void UmbraDeviceIdleTest::isConnectedOnDemand()
{
    QCOMPARE(m_client->name(), "deviceidle");
    QVERIFY(!m_client->isConnected());

    m_client->setPowerSaveWhitelist(Package, true);

    QVERIFY(m_client->isConnected());
}

void UmbraDeviceIdleTest::addsAndRemoves_data()
{
    QTest::addColumn<bool>("whitelisted");
    QTest::addColumn<uint>("code");

    QTest::newRow("add") << true << 1U;
    QTest::newRow("remove") << false << 2U;
}

void UmbraDeviceIdleTest::addsAndRemoves()
{
    QFETCH(bool, whitelisted);

    m_client->setPowerSaveWhitelist(Package, whitelisted);

    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QTEST(calls.front().code, "code");
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().data, requestBytes());
    QCOMPARE(takeLog(QtCriticalMsg), QStringList()); // at unsupported levels, too
}

void UmbraDeviceIdleTest::saysThatASettingFailed_data()
{
    QTest::addColumn<int>("status");

    QTest::newRow("refused") << -74;
    QTest::newRow("positive status") << 3;
}

void UmbraDeviceIdleTest::saysThatASettingFailed()
{
    QFETCH(int, status);
    m_service->setReply(2, FakeReply::statusCode(status));

    m_client->setPowerSaveWhitelist(Package, false);

    QCOMPARE(takeLog(QtCriticalMsg, Category), QStringList(SettingFailed));
}

void UmbraDeviceIdleTest::takesAnyAnswerToASetting()
{
    m_service->setReply(1, FakeReply::data(FakeParcel().int32(-1)));

    m_client->setPowerSaveWhitelist(Package, true);

    QCOMPARE(takeLog(QtCriticalMsg), QStringList());
}

void UmbraDeviceIdleTest::asksWhetherAPackageIsListed()
{
    m_service->setReply(code(13, 16, 16, 16), FakeReply::data(FakeParcel().int32(0).int32(1)));

    QVERIFY(m_client->isPowerSaveWhitelisted(Package));

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().code, code(13, 16, 16, 16));
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().data, requestBytes());
}

void UmbraDeviceIdleTest::takesOnlyOneForTrue_data()
{
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("zero") << FakeParcel().int32(0).int32(0).data();
    QTest::newRow("two") << FakeParcel().int32(0).int32(2).data();
    QTest::newRow("minus one") << FakeParcel().int32(0).int32(-1).data();
    QTest::newRow("no answer") << FakeParcel().int32(0).data();
}

void UmbraDeviceIdleTest::takesOnlyOneForTrue()
{
    QFETCH(QByteArray, answer);
    m_service->setReply(code(13, 16, 16, 16), FakeReply::data(FakeParcel(answer)));

    QVERIFY(!m_client->isPowerSaveWhitelisted(Package));

    QCOMPARE(takeLog(QtCriticalMsg), levelLines());
}

void UmbraDeviceIdleTest::saysThatACheckFailed_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("refused") << -74 << QByteArray();
    QTest::newRow("positive status") << 3 << QByteArray();
    QTest::newRow("exception") << 0 << FakeParcel().int32(-1).int32(1).data();
    QTest::newRow("positive exception") << 0 << FakeParcel().int32(1).int32(1).data();
    QTest::newRow("nothing") << 0 << QByteArray();
}

void UmbraDeviceIdleTest::saysThatACheckFailed()
{
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    m_service->setReply(code(13, 16, 16, 16), status == 0 ? FakeReply::data(FakeParcel(answer))
                                                          : FakeReply::statusCode(status));

    QVERIFY(!m_client->isPowerSaveWhitelisted(Package));

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines() + QStringList(CheckFailed));
}

void UmbraDeviceIdleTest::sendsNothingWithoutAConnection_data()
{
    QTest::addColumn<bool>("runtimeIsThere");

    QTest::newRow("no service") << true;
    QTest::newRow("no runtime") << false;
}

void UmbraDeviceIdleTest::sendsNothingWithoutAConnection()
{
    QFETCH(bool, runtimeIsThere);
    m_service->setReply(code(13, 16, 16, 16), FakeReply::data(FakeParcel().int32(0).int32(1)));
    if (runtimeIsThere)
        m_binder->removeService("deviceidle");
    else
        QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    m_client->setPowerSaveWhitelist(Package, true);
    QVERIFY(!m_client->isPowerSaveWhitelisted(Package));

    QCOMPARE(m_service->transactions().size(), std::size_t(0));
    QCOMPARE(takeLog(QtCriticalMsg), QStringList());
}

QTEST_GUILESS_MAIN(UmbraDeviceIdleTest)
#include "tst_umbradeviceidle.moc"
