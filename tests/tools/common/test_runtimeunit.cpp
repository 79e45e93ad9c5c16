#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "support/testcase.h"
#include "tools/common/runtimeunit.h"

#include <QtTest>

namespace {

const QString Client = QStringLiteral("client");

FakeSystemd::Unit runningUnit()
{
    FakeSystemd::Unit unit;
    unit.properties = FakeSystemd::properties(QStringLiteral("active"), QStringLiteral("running"),
                                              QStringLiteral("enabled"));
    return unit;
}

} // namespace

class TestRuntimeUnit : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void the_state_is_what_systemd_says();
    void the_unit_file_is_looked_at_anew();
    void only_enabled_is_enabled_data();
    void only_enabled_is_enabled();
    void a_unit_that_cannot_be_started_is_told_apart_data();
    void a_unit_that_cannot_be_started_is_told_apart();
    void a_unit_that_was_masked_while_it_ran_runs();
    void a_refusal_leaves_the_state_unknown_data();
    void a_refusal_leaves_the_state_unknown();
    void without_systemd_the_state_is_unknown();
    void without_a_bus_the_bus_is_what_is_wrong();
    void every_state_is_told_once_it_is_watched();
    void what_cannot_be_watched_is_told();

private:
    QDBusConnection client() const { return QDBusConnection(Client); }

    std::unique_ptr<PrivateBus> m_bus;
};

void TestRuntimeUnit::init()
{
    TestCase::init();
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY(m_bus->start());
    QVERIFY(QDBusConnection::connectToBus(m_bus->address(), Client).isConnected());
}

void TestRuntimeUnit::cleanup()
{
    QDBusConnection::disconnectFromBus(Client);
    m_bus.reset();
    TestCase::cleanup();
}

void TestRuntimeUnit::the_state_is_what_systemd_says()
{
    FakeSystemd systemd(m_bus->address(), runningUnit());
    QVERIFY(systemd.isUp());

    const RuntimeUnit::State state = RuntimeUnit(client()).read();

    QVERIFY(state.outcome.isDone());
    QVERIFY(!state.isUnstartable);
    QCOMPARE(state.activeState, QStringLiteral("active"));
    QCOMPARE(state.subState, QStringLiteral("running"));
    QCOMPARE(state.unitFileState, QStringLiteral("enabled"));
}

void TestRuntimeUnit::the_unit_file_is_looked_at_anew()
{
    FakeSystemd::Unit unit;
    unit.properties = FakeSystemd::properties(QStringLiteral("active"), QStringLiteral("running"),
                                              QStringLiteral("disabled"));
    unit.fileState = QStringLiteral("enabled");
    FakeSystemd systemd(m_bus->address(), unit);

    QCOMPARE(RuntimeUnit(client()).read().unitFileState, QStringLiteral("enabled"));
}

void TestRuntimeUnit::only_enabled_is_enabled_data()
{
    QTest::addColumn<QString>("unitFileState");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("enabled") << QStringLiteral("enabled") << true;
    QTest::newRow("disabled") << QStringLiteral("disabled") << false;
    QTest::newRow("until the next boot only") << QStringLiteral("enabled-runtime") << false;
    QTest::newRow("not known") << QString() << false;
}

void TestRuntimeUnit::only_enabled_is_enabled()
{
    QFETCH(QString, unitFileState);
    RuntimeUnit::State state;
    state.unitFileState = unitFileState;

    QTEST(state.isEnabled(), "enabled");
}

void TestRuntimeUnit::a_unit_that_cannot_be_started_is_told_apart_data()
{
    QTest::addColumn<QString>("loadState");
    QTest::addColumn<QString>("says");

    QTest::newRow("there is no file of it")
        << QStringLiteral("not-found") << QStringLiteral("The Android runtime is not installed:");
    QTest::newRow("it is masked") << QStringLiteral("masked")
                                  << QStringLiteral("The Android runtime may not be started:");
    QTest::newRow("it is no good") << QStringLiteral("bad-setting")
                                   << QStringLiteral("The Android runtime cannot be started:");
}

void TestRuntimeUnit::a_unit_that_cannot_be_started_is_told_apart()
{
    QFETCH(QString, loadState);
    QFETCH(QString, says);
    FakeSystemd::Unit unit;
    unit.properties = {{QStringLiteral("LoadState"), loadState},
                       {QStringLiteral("ActiveState"), QStringLiteral("inactive")}};
    FakeSystemd systemd(m_bus->address(), unit);

    const RuntimeUnit::State state = RuntimeUnit(client()).read();

    QVERIFY(state.isUnstartable);
    QCOMPARE(state.activeState, QString());
    QCOMPARE(state.outcome.status, ExitStatus::RuntimeUnavailable);
    QVERIFY2(state.outcome.sentence.startsWith(says), qPrintable(state.outcome.sentence));
}

void TestRuntimeUnit::a_unit_that_was_masked_while_it_ran_runs()
{
    FakeSystemd::Unit unit = runningUnit();
    unit.properties.insert(QStringLiteral("LoadState"), QStringLiteral("masked"));
    FakeSystemd systemd(m_bus->address(), unit);

    const RuntimeUnit::State state = RuntimeUnit(client()).read();

    QVERIFY(state.outcome.isDone());
    QCOMPARE(state.activeState, QStringLiteral("active"));
}

void TestRuntimeUnit::a_refusal_leaves_the_state_unknown_data()
{
    QTest::addColumn<bool>("loadable");
    QTest::addColumn<QString>("reason");

    QTest::newRow("of the unit") << false << QStringLiteral("Unit is masked");
    QTest::newRow("of its properties") << true << QStringLiteral("No");
}

void TestRuntimeUnit::a_refusal_leaves_the_state_unknown()
{
    QFETCH(bool, loadable);
    QFETCH(QString, reason);
    FakeSystemd::Unit unit = runningUnit();
    unit.loadable = loadable;
    unit.readable = false;
    FakeSystemd systemd(m_bus->address(), unit);

    const RuntimeUnit::State state = RuntimeUnit(client()).read();

    QVERIFY(!state.isUnstartable);
    QCOMPARE(state.activeState, QString());
    const Outcome expected{
        ExitStatus::RuntimeUnavailable,
        QStringLiteral("systemd does not tell the state of the Android runtime (%1). Look at "
                       "“systemctl status umbravm.service”.")
            .arg(reason)};
    QVERIFY2(state.outcome == expected, qPrintable(state.outcome.sentence));
}

void TestRuntimeUnit::without_systemd_the_state_is_unknown()
{
    const RuntimeUnit::State state = RuntimeUnit(client()).read();

    QVERIFY(!state.isUnstartable);
    QCOMPARE(state.outcome.status, ExitStatus::RuntimeUnavailable);
    QVERIFY(state.outcome.sentence.startsWith(
        QStringLiteral("systemd does not tell the state of the Android runtime (")));
}

void TestRuntimeUnit::without_a_bus_the_bus_is_what_is_wrong()
{
    const QString none = QStringLiteral("none");
    const RuntimeUnit unit(
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), none));

    QCOMPARE(unit.read().outcome.status, ExitStatus::DaemonUnreachable);
}

void TestRuntimeUnit::every_state_is_told_once_it_is_watched()
{
    FakeSystemd systemd(m_bus->address(), runningUnit());
    RuntimeUnit unit(client());
    QSignalSpy told(&unit, &RuntimeUnit::activeStateChanged);
    const QString activeState = QStringLiteral("ActiveState");

    QVERIFY(unit.watch().isDone());
    systemd.changeProperties({{activeState, QStringLiteral("deactivating")}});
    systemd.changeProperties({{QStringLiteral("SubState"), QStringLiteral("stop-post")}});
    systemd.changeProperties({{activeState, QStringLiteral("of another interface")}},
                             QStringLiteral("org.freedesktop.systemd1.Service"));
    systemd.changeProperties({{activeState, QStringLiteral("inactive")}});

    QTRY_COMPARE(told.size(), 2);
    QCOMPARE(told.at(0), QVariantList{QStringLiteral("deactivating")});
    QCOMPARE(told.at(1), QVariantList{QStringLiteral("inactive")});
    QVERIFY(systemd.calls().contains(QStringLiteral(
        "/org/freedesktop/systemd1 org.freedesktop.systemd1.Manager.Subscribe  ()")));
}

void TestRuntimeUnit::what_cannot_be_watched_is_told()
{
    RuntimeUnit unit(client());

    QCOMPARE(unit.watch().status, ExitStatus::RuntimeUnavailable);
}

QTEST_GUILESS_MAIN(TestRuntimeUnit)
#include "test_runtimeunit.moc"
