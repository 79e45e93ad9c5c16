#include "platform/timed/faketimedate.h"
#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"
#include "runtime/umbratimezonemonitor.h"

#include <QtTest>

using Fjord::Timed::WallClock::Info;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");
const QString Helsinki = QStringLiteral("Europe/Helsinki");
const QString BuenosAires = QStringLiteral("America/Argentina/Buenos_Aires");
const QString Utc = QStringLiteral("UTC");

constexpr quint32 SetTimeZone = 3;

QByteArray requestBytes(const QString &zone)
{
    return RuntimeLevel::token("android.app.IAlarmManager").string16(zone).data();
}

} // namespace

class UmbraTimezoneMonitorTest : public RuntimeTest
{
    Q_OBJECT

private Q_SLOTS:
    void isConnectedToTheAlarmService();
    void tellsTheHostsZone_data();
    void tellsTheHostsZone();
    void tellsAnyNewZone_data();
    void tellsAnyNewZone();
    void tellsARuntimeThatIsUpAlreadyOnlyOfChanges();
    void tellsChangesOnce();
    void doesNotMindWhetherTheClockWasSet();
    void ignoresWhatIsNoZone_data();
    void ignoresWhatIsNoZone();
    void tellsNoZoneWithoutATimeDaemon();
    void hearsATimeDaemonThatComesLater();
    void tellsWhatChangedWhileTheRuntimeWasAway();
    void tellsAgainAfterADeath();
    void reportsFailuresAndDoesNotRepeatThem_data();
    void reportsFailuresAndDoesNotRepeatThem();
    void survivesARuntimeThatDiesMeanwhile();
    void doesNotReadTheReply();
    void sendsNothingWhenItEnds();

private:
    void setUp() override;
    void tearDown() override;

    /// Makes the monitor on a host with a time daemon that is in this zone.
    void start(const QVariant &zone);
    void startRuntime() { QVERIFY(m_host.setUnitState(QStringLiteral("active"))); }
    void stopRuntime() { QVERIFY(m_host.setUnitState(QStringLiteral("deactivating"))); }

    /// The requests since the last call; all must be plain calls of one code.
    QList<QByteArray> takeRequests();

    std::shared_ptr<FakeObject> m_alarm;
    std::unique_ptr<FakeTimedate> m_timedate;
    std::unique_ptr<UmbraTimezoneMonitor> m_monitor;
};

void UmbraTimezoneMonitorTest::setUp()
{
    m_alarm = m_binder->addService("alarm");
}

void UmbraTimezoneMonitorTest::tearDown()
{
    m_monitor.reset();
    m_timedate.reset();
}

void UmbraTimezoneMonitorTest::start(const QVariant &zone)
{
    m_timedate = std::make_unique<FakeTimedate>(m_host.busAddress(), FakeTimedate::zone(zone));
    QVERIFY(m_timedate->isUp());
    m_monitor = std::make_unique<UmbraTimezoneMonitor>();
}

QList<QByteArray> UmbraTimezoneMonitorTest::takeRequests()
{
    QList<QByteArray> requests;
    for (const FakeTransaction &call : m_alarm->takeTransactions()) {
        const bool usual = call.code == SetTimeZone && !call.isOneWay() && call.offsets.empty();
        requests.append(usual ? call.data : QByteArray("unusual"));
    }
    return requests;
}

void UmbraTimezoneMonitorTest::isConnectedToTheAlarmService()
{
    start(Helsinki);

    QCOMPARE(m_monitor->name(), "alarm");
    QVERIFY(m_monitor->isConnected()); // without being asked to: it is persistent
}

void UmbraTimezoneMonitorTest::tellsTheHostsZone_data()
{
    QTest::addColumn<QString>("zone");
    QTest::addColumn<QString>("told");

    QTest::newRow("two parts") << Helsinki << Helsinki;
    QTest::newRow("three parts") << BuenosAires << BuenosAires;
    QTest::newRow("one part") << Utc << Utc;
    QTest::newRow("empty") << QStringLiteral("") << QStringLiteral("");
    QTest::newRow("Latin-1 is no UTF-8")
        << QStringLiteral("a/\u00fcb") << QStringLiteral("a/\ufffdb");
    QTest::newRow("outside Latin-1") << QStringLiteral("a/\u0416b") << QStringLiteral("a/?b");
}

void UmbraTimezoneMonitorTest::tellsTheHostsZone()
{
    QFETCH(QString, zone);
    QFETCH(QString, told);
    stopRuntime();
    start(zone);
    QCOMPARE(takeRequests(), {});

    startRuntime();

    QCOMPARE(takeRequests(), {requestBytes(told)});
}

void UmbraTimezoneMonitorTest::tellsAnyNewZone_data()
{
    tellsTheHostsZone_data();
}

void UmbraTimezoneMonitorTest::tellsAnyNewZone()
{
    QFETCH(QString, zone);
    QFETCH(QString, told);
    start(QStringLiteral("Asia/Kathmandu"));
    takeRequests();

    m_timedate->announce(zone);

    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), 1);
    QCOMPARE(takeRequests(), {requestBytes(told)});
}

void UmbraTimezoneMonitorTest::tellsARuntimeThatIsUpAlreadyOnlyOfChanges()
{
    start(Helsinki);
    m_timedate->announce(Helsinki);
    m_timedate->announce(Utc);

    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), 1);
    QCOMPARE(takeRequests(), {requestBytes(Utc)});
}

void UmbraTimezoneMonitorTest::tellsChangesOnce()
{
    start(Helsinki);
    takeRequests();

    for (const QString &zone : {Helsinki, BuenosAires, BuenosAires, Utc, Utc, Helsinki})
        m_timedate->announce(zone);

    const QList<QByteArray> expected{requestBytes(BuenosAires), requestBytes(Utc),
                                     requestBytes(Helsinki)};
    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), expected.size());
    QCOMPARE(takeRequests(), expected);
}

void UmbraTimezoneMonitorTest::doesNotMindWhetherTheClockWasSet()
{
    start(Helsinki);
    takeRequests();

    m_monitor->settingsChanged(Info(Helsinki), true);
    QCOMPARE(takeRequests(), {});

    m_monitor->settingsChanged(Info(Utc), true);
    m_monitor->settingsChanged(Info(BuenosAires), false);
    QCOMPARE(takeRequests(), (QList<QByteArray>{requestBytes(Utc), requestBytes(BuenosAires)}));
}

void UmbraTimezoneMonitorTest::ignoresWhatIsNoZone_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("number") << QVariant(5);
    QTest::newRow("list") << QVariant(QStringList(Utc));
}

void UmbraTimezoneMonitorTest::ignoresWhatIsNoZone()
{
    QFETCH(QVariant, value);
    stopRuntime();
    start(value);
    startRuntime();
    QCOMPARE(takeRequests(), {requestBytes(QStringLiteral(""))});

    m_timedate->announce(Helsinki);
    m_timedate->announce(value);
    m_timedate->announce(Utc);

    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), 2);
    QCOMPARE(takeRequests(), (QList<QByteArray>{requestBytes(Helsinki), requestBytes(Utc)}));
}

void UmbraTimezoneMonitorTest::tellsNoZoneWithoutATimeDaemon()
{
    stopRuntime();
    m_monitor = std::make_unique<UmbraTimezoneMonitor>();
    startRuntime();

    QCOMPARE(takeRequests(), {requestBytes(QStringLiteral(""))});
}

void UmbraTimezoneMonitorTest::hearsATimeDaemonThatComesLater()
{
    m_monitor = std::make_unique<UmbraTimezoneMonitor>();
    takeRequests();
    m_timedate = std::make_unique<FakeTimedate>(m_host.busAddress(), FakeTimedate::zone(Utc));

    m_timedate->announce(Helsinki);

    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), 1);
    QCOMPARE(takeRequests(), {requestBytes(Helsinki)});
}

void UmbraTimezoneMonitorTest::tellsWhatChangedWhileTheRuntimeWasAway()
{
    start(Helsinki);
    takeRequests();
    stopRuntime();

    m_monitor->settingsChanged(Info(BuenosAires), false);
    m_monitor->settingsChanged(Info(Utc), false);
    QCOMPARE(takeRequests(), {});
    startRuntime();

    QCOMPARE(takeRequests(), {requestBytes(Utc)});
}

void UmbraTimezoneMonitorTest::tellsAgainAfterADeath()
{
    start(Helsinki);
    const auto before = m_alarm;
    m_alarm = m_binder->addService("alarm");

    m_binder->kill(before);

    QTRY_COMPARE(static_cast<int>(m_alarm->transactions().size()), 1);
    QCOMPARE(takeRequests(), {requestBytes(Helsinki)});
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1); // of the death
}

void UmbraTimezoneMonitorTest::reportsFailuresAndDoesNotRepeatThem_data()
{
    QTest::addColumn<int>("status");

    QTest::newRow("refused") << -22;
    QTest::newRow("positive status") << 7;
}

void UmbraTimezoneMonitorTest::reportsFailuresAndDoesNotRepeatThem()
{
    QFETCH(int, status);
    start(Helsinki);
    takeRequests();
    m_alarm->setReply(SetTimeZone, FakeReply::statusCode(status));

    m_monitor->settingsChanged(Info(Utc), false);
    m_monitor->settingsChanged(Info(Utc), false);

    QCOMPARE(takeRequests(), {requestBytes(Utc)});
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("Failed to set umbra timezone: %1").arg(status)));
    m_alarm->setReply(SetTimeZone, FakeReply());
    stopRuntime();
    startRuntime();
    QCOMPARE(takeRequests(), {requestBytes(Utc)}); // what failed was kept
}

void UmbraTimezoneMonitorTest::survivesARuntimeThatDiesMeanwhile()
{
    start(Helsinki);
    takeRequests();
    m_alarm->setReply(SetTimeZone, FakeReply::dead());
    const auto after = std::make_shared<FakeObject>();
    m_binder->setService("alarm", after);

    m_monitor->settingsChanged(Info(Utc), false);
    QVERIFY(takeLogLine(QtWarningMsg, QStringLiteral("Failed to set umbra timezone: -32")));
    m_binder->kill(m_alarm);

    QTRY_COMPARE(static_cast<int>(after->transactions().size()), 1);
    QCOMPARE(after->takeTransactions().front().data, requestBytes(Utc));
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1); // of the death
}

void UmbraTimezoneMonitorTest::doesNotReadTheReply()
{
    m_alarm->setReply(SetTimeZone, FakeReply::data(FakeParcel().int32(-1)));
    start(Helsinki);

    m_monitor->settingsChanged(Info(Utc), false);

    QCOMPARE(takeRequests(), {requestBytes(Utc)});
}

void UmbraTimezoneMonitorTest::sendsNothingWhenItEnds()
{
    start(Helsinki);
    takeRequests();

    m_monitor.reset();
    m_timedate->announce(Utc);
    stopRuntime();
    startRuntime();

    QCOMPARE(takeRequests(), {});
}

QTEST_GUILESS_MAIN(UmbraTimezoneMonitorTest)
#include "tst_umbratimezonemonitor.moc"
