#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"
#include "runtime/umbrastoragestatsmanager.h"

#include <QtTest>

using RuntimeLevel::code;
using RuntimeLevel::levelLines;
using RuntimeLevel::sdk;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");
const QString Package = QStringLiteral("a.b");

using Figures = QList<qint64>;

FakeParcel statsToken()
{
    return RuntimeLevel::token("android.app.usage.IStorageStatsManager");
}

} // namespace

class UmbraStorageStatsManagerTest : public RuntimeClientTest<UmbraStorageStatsManager>
{
    Q_OBJECT

public:
    UmbraStorageStatsManagerTest()
        : RuntimeClientTest("storagestats")
    {
    }

private Q_SLOTS:
    void isConnectedOnDemand();
    void asksForAPackage();
    void asksForAVolumeAndAUser();
    void readsFiguresWhateverTheStatus_data();
    void readsFiguresWhateverTheStatus();
    void logsWhatItReads();
    void hasNoFiguresWhenTheCallFails_data();
    void hasNoFiguresWhenTheCallFails();
    void hasNoFiguresWithoutTheService();
    void hasNoFiguresWithoutTheRuntime();

private:
    Figures query();
};

Figures UmbraStorageStatsManagerTest::query()
{
    const PackageStats stats = m_client->queryStatsForPackage(Package, QString(), 0);
    return {stats.code, stats.data, stats.cache};
}

void UmbraStorageStatsManagerTest::isConnectedOnDemand()
{
    QCOMPARE(m_client->name(), "storagestats");
    QVERIFY(!m_client->isConnected());

    query();

    QVERIFY(m_client->isConnected());
    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
}

void UmbraStorageStatsManagerTest::asksForAPackage()
{
    query();

    QCOMPARE(takeLog(QtCriticalMsg, Category), levelLines());
    const auto calls = m_service->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().code, code(6, 7, 7, 7));
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().data,
             statsToken().int32(-1).string16(Package).int32(0).int32(-1).data());
}

void UmbraStorageStatsManagerTest::asksForAVolumeAndAUser()
{
    m_client->queryStatsForPackage(Package, QStringLiteral("u"), 10);

    takeLog(QtCriticalMsg, Category);
    QCOMPARE(
        m_service->takeTransactions().front().data,
        statsToken().string16(QStringLiteral("u")).string16(Package).int32(10).int32(-1).data());
}

void UmbraStorageStatsManagerTest::readsFiguresWhateverTheStatus_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<Figures>("figures");

    const QByteArray figures = QByteArray::fromHex("0a00000000000000 1400000000000000"
                                                   "0500000000000000");
    QTest::newRow("figures") << QByteArray::fromHex("00000000 01000000") + figures
                             << Figures{10, 20, 5};
    QTest::newRow("beyond 32 bits") << QByteArray::fromHex("00000000 01000000 0000000001000000"
                                                           "ffffffff02000000 feffffffffffffff")
                                    << Figures{0x100000000, 0x2ffffffff, -2};
    QTest::newRow("exception") << QByteArray::fromHex("ffffffff 01000000") + figures
                               << Figures{10, 20, 5};
    QTest::newRow("an exception's text is read as figures")
        << QByteArray::fromHex("ffffffff 02000000 6e006f00 00000000 00000000")
        << Figures{0x6f006e, -1, -1};
    QTest::newRow("figures that are said to be absent")
        << QByteArray::fromHex("00000000 00000000") + figures << Figures{10, 20, 5};
    QTest::newRow("nothing") << QByteArray() << Figures{-1, -1, -1};
    QTest::newRow("half a status") << QByteArray(4, '\0') << Figures{-1, -1, -1};
    QTest::newRow("status only") << QByteArray(8, '\0') << Figures{-1, -1, -1};
    QTest::newRow("code only") << QByteArray::fromHex("00000000 01000000") + figures.left(8)
                               << Figures{10, -1, -1};
    QTest::newRow("no cache") << QByteArray::fromHex("00000000 01000000") + figures.left(16)
                              << Figures{10, 20, -1};
}

void UmbraStorageStatsManagerTest::readsFiguresWhateverTheStatus()
{
    QFETCH(QByteArray, answer);
    m_service->setReply(code(6, 7, 7, 7), FakeReply::data(FakeParcel(answer)));

    QTEST(query(), "figures");

    QCOMPARE(takeLog(QtCriticalMsg), levelLines());
}

void UmbraStorageStatsManagerTest::logsWhatItReads()
{
    m_service->setReply(code(6, 7, 7, 7), FakeReply::data(FakeParcel(QByteArray::fromHex(
                                              "feffffff 01000000 0a00000000000000 1400000000000000"
                                              "0500000000000000"))));

    query();

    takeLog(QtCriticalMsg, Category);
    QStringList lines = takeLog(QtDebugMsg, Category);
    QCOMPARE(lines.count(QStringLiteral("Requesting package stats")), 1);
    lines = lines.mid(lines.indexOf(QStringLiteral("Status: -2")));
    QCOMPARE(lines,
             QStringList({QStringLiteral("Status: -2"), QStringLiteral("Code:  10"),
                          QStringLiteral("Data:  20"), QStringLiteral("Cache:  5"),
                          QStringLiteral("Destroying transaction %1").arg(code(6, 7, 7, 7))}));
}

void UmbraStorageStatsManagerTest::hasNoFiguresWhenTheCallFails_data()
{
    QTest::addColumn<int>("status");

    QTest::newRow("refused") << -74;
    QTest::newRow("positive status") << 3;
}

void UmbraStorageStatsManagerTest::hasNoFiguresWhenTheCallFails()
{
    QFETCH(int, status);
    m_service->setReply(code(6, 7, 7, 7), FakeReply::statusCode(status));

    QCOMPARE(query(), (Figures{0, 0, 0}));

    QCOMPARE(takeLog(QtCriticalMsg, Category),
             levelLines() + QStringList(QStringLiteral("Error requesting package stats")));
}

void UmbraStorageStatsManagerTest::hasNoFiguresWithoutTheService()
{
    m_binder->removeService("storagestats");

    QCOMPARE(query(), (Figures{0, 0, 0}));

    QCOMPARE(takeLog(QtCriticalMsg, Category),
             levelLines() +
                 QStringList(QStringLiteral("Could not create storagestats transaction")));
}

void UmbraStorageStatsManagerTest::hasNoFiguresWithoutTheRuntime()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QCOMPARE(query(), (Figures{0, 0, 0}));

    QCOMPARE(takeLog(QtCriticalMsg, Category),
             levelLines() +
                 QStringList(QStringLiteral("Could not create storagestats transaction")));
    QCOMPARE(m_service->transactions().size(), std::size_t(0));
}

QTEST_GUILESS_MAIN(UmbraStorageStatsManagerTest)
#include "tst_umbrastoragestatsmanager.moc"
