#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "runtime/servicecontroller.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.service");

/// A call of systemd's manager as the fake keeps it.
QString managerCall(const char *rest)
{
    return QStringLiteral("/org/freedesktop/systemd1 org.freedesktop.systemd1.Manager.") +
           QLatin1String(rest);
}

QVariantMap activeState(const char *state)
{
    return {{QStringLiteral("ActiveState"), QLatin1String(state)}};
}

const char EnableCall[] = "EnableUnitFiles asbb ([umbravm.service], false, true)";

} // namespace

/// The process has one controller, so the functions run in this order.
class ServiceControllerTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void readsTheUnitOnFirstUse();
    void isOneForTheProcess();
    void followsTheUnitsState();
    void logsAnUnchangedStateButDoesNotReportIt();
    void followsWhetherTheUnitIsEnabled();
    void takesOnlyEnabledForEnabled_data();
    void takesOnlyEnabledForEnabled();
    void ignoresOtherInterfaces();
    void startsTheUnitUnlessItIsUpOrComingUp_data();
    void startsTheUnitUnlessItIsUpOrComingUp();
    void stopsTheUnitUnlessItIsDownOrGoingDown_data();
    void stopsTheUnitUnlessItIsDownOrGoingDown();
    void enablesAndDisablesTheUnitWhateverTheFlag();

private:
    /// Changes the state and waits until the controller has it.
    bool setState(const char *state);

    PrivateBus m_bus;
    std::unique_ptr<FakeSystemd> m_systemd;
};

void ServiceControllerTest::initTestCase()
{
    QVERIFY(m_bus.start());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    FakeSystemd::Unit unit;
    unit.properties = FakeSystemd::properties(QStringLiteral("active"), QStringLiteral("running"),
                                              QStringLiteral("enabled"));
    m_systemd = std::make_unique<FakeSystemd>(m_bus.address(), unit);
    QVERIFY(m_systemd->isUp());
}

bool ServiceControllerTest::setState(const char *state)
{
    m_systemd->changeProperties(activeState(state));
    return QTest::qWaitFor(
        [state] { return ServiceController::instance()->serviceState() == QLatin1String(state); });
}

void ServiceControllerTest::readsTheUnitOnFirstUse()
{
    const ServiceController *controller = ServiceController::instance();

    QCOMPARE(controller->serviceState(), QStringLiteral("active"));
    QCOMPARE(controller->serviceEnabled(), true);
    QCOMPARE(m_systemd->calls(),
             QStringList({managerCall("Subscribe  ()"), managerCall("LoadUnit s (umbravm.service)"),
                          FakeSystemd::unitPath() +
                              QStringLiteral(" org.freedesktop.DBus.Properties.GetAll s "
                                             "(org.freedesktop.systemd1.Unit)")}));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Umbra VM is \"active\" ( \"running\" )")));
}

void ServiceControllerTest::isOneForTheProcess()
{
    QCOMPARE(ServiceController::instance(), ServiceController::instance());
}

void ServiceControllerTest::followsTheUnitsState()
{
    const ServiceController *controller = ServiceController::instance();
    QSignalSpy changed(controller, &ServiceController::serviceStateChanged);

    m_systemd->changeProperties({{QStringLiteral("ActiveState"), QStringLiteral("deactivating")},
                                 {QStringLiteral("SubState"), QStringLiteral("stop-sigterm")}});

    QVERIFY(changed.wait());
    QCOMPARE(controller->serviceState(), QStringLiteral("deactivating"));
    QCOMPARE(controller->property("serviceState").toString(), QStringLiteral("deactivating"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Umbra VM is \"deactivating\" ( \"stop-sigterm\" )")));
}

void ServiceControllerTest::logsAnUnchangedStateButDoesNotReportIt()
{
    const ServiceController *controller = ServiceController::instance();
    QVERIFY(setState("inactive"));
    takeLog(QtDebugMsg, Category);
    QSignalSpy changed(controller, &ServiceController::serviceStateChanged);

    m_systemd->changeProperties(activeState("failed"));
    m_systemd->changeProperties(activeState("failed"));

    const QString line = QStringLiteral("Umbra VM is \"failed\" ( \"\" )");
    QStringList lines;
    QTRY_COMPARE(lines += takeLog(QtDebugMsg, Category), QStringList({line, line}));
    QCOMPARE(changed.count(), 1);
}

void ServiceControllerTest::followsWhetherTheUnitIsEnabled()
{
    const ServiceController *controller = ServiceController::instance();
    QCOMPARE(controller->serviceEnabled(), true);
    QSignalSpy enabled(controller, &ServiceController::serviceEnabledChanged);
    QSignalSpy state(controller, &ServiceController::serviceStateChanged);

    m_systemd->changeProperties({{QStringLiteral("UnitFileState"), QStringLiteral("disabled")}});
    QVERIFY(enabled.wait());
    QCOMPARE(controller->serviceEnabled(), false);
    QCOMPARE(controller->property("serviceEnabled").toBool(), false);

    m_systemd->changeProperties({{QStringLiteral("UnitFileState"), QStringLiteral("enabled")}});
    QVERIFY(enabled.wait());
    QCOMPARE(controller->serviceEnabled(), true);

    QCOMPARE(state.count(), 0);
    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList());
}

void ServiceControllerTest::takesOnlyEnabledForEnabled_data()
{
    QTest::addColumn<QString>("unitFileState");

    QTest::newRow("disabled") << QStringLiteral("disabled");
    QTest::newRow("enabled until the next boot") << QStringLiteral("enabled-runtime");
    QTest::newRow("static") << QStringLiteral("static");
    QTest::newRow("masked") << QStringLiteral("masked");
    QTest::newRow("empty") << QString();
}

void ServiceControllerTest::takesOnlyEnabledForEnabled()
{
    QFETCH(QString, unitFileState);
    const ServiceController *controller = ServiceController::instance();
    m_systemd->changeProperties({{QStringLiteral("UnitFileState"), QStringLiteral("enabled")}});
    QTRY_VERIFY(controller->serviceEnabled());
    QSignalSpy enabled(controller, &ServiceController::serviceEnabledChanged);

    m_systemd->changeProperties({{QStringLiteral("UnitFileState"), unitFileState}});

    QVERIFY(enabled.wait());
    QCOMPARE(controller->serviceEnabled(), false);
}

void ServiceControllerTest::ignoresOtherInterfaces()
{
    const ServiceController *controller = ServiceController::instance();
    QVERIFY(setState("inactive"));
    takeLog(QtDebugMsg, Category);
    const bool enabled = controller->serviceEnabled();
    QSignalSpy changed(controller, &ServiceController::serviceStateChanged);
    QSignalSpy enabledChanged(controller, &ServiceController::serviceEnabledChanged);

    m_systemd->changeProperties(
        FakeSystemd::properties(QStringLiteral("active"), QStringLiteral("running"),
                                enabled ? QStringLiteral("disabled") : QStringLiteral("enabled")),
        QStringLiteral("org.freedesktop.systemd1.Service"));
    m_systemd->changeProperties(activeState("failed"));

    QVERIFY(changed.wait());
    QCOMPARE(controller->serviceState(), QStringLiteral("failed"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(enabledChanged.count(), 0);
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Umbra VM is \"failed\" ( \"\" )")));
}

void ServiceControllerTest::startsTheUnitUnlessItIsUpOrComingUp_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<bool>("sent");

    QTest::newRow("active") << QByteArray("active") << false;
    QTest::newRow("activating") << QByteArray("activating") << false;
    QTest::newRow("inactive") << QByteArray("inactive") << true;
    QTest::newRow("deactivating") << QByteArray("deactivating") << true;
    QTest::newRow("failed") << QByteArray("failed") << true;
}

void ServiceControllerTest::startsTheUnitUnlessItIsUpOrComingUp()
{
    QFETCH(QByteArray, state);
    QFETCH(bool, sent);
    QVERIFY(setState(state.constData()));
    m_systemd->clearCalls();

    ServiceController::instance()->controlService(true);
    ServiceController::instance()->controlServiceAutostart(true); // arrives after what was sent

    QStringList expected;
    if (sent)
        expected.append(managerCall("StartUnit ss (umbravm.service, replace)"));
    expected.append(managerCall(EnableCall));
    QTRY_COMPARE(m_systemd->calls(), expected);
    QCOMPARE(ServiceController::instance()->serviceState(), QString::fromLatin1(state));
}

void ServiceControllerTest::stopsTheUnitUnlessItIsDownOrGoingDown_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<bool>("sent");

    QTest::newRow("active") << QByteArray("active") << true;
    QTest::newRow("activating") << QByteArray("activating") << true;
    QTest::newRow("inactive") << QByteArray("inactive") << false;
    QTest::newRow("deactivating") << QByteArray("deactivating") << false;
    QTest::newRow("failed") << QByteArray("failed") << true;
}

void ServiceControllerTest::stopsTheUnitUnlessItIsDownOrGoingDown()
{
    QFETCH(QByteArray, state);
    QFETCH(bool, sent);
    QVERIFY(setState(state.constData()));
    m_systemd->clearCalls();

    ServiceController::instance()->controlService(false);
    ServiceController::instance()->controlServiceAutostart(true); // arrives after what was sent

    QStringList expected;
    if (sent)
        expected.append(managerCall("StopUnit ss (umbravm.service, replace)"));
    expected.append(managerCall(EnableCall));
    QTRY_COMPARE(m_systemd->calls(), expected);
    QCOMPARE(ServiceController::instance()->serviceState(), QString::fromLatin1(state));
}

void ServiceControllerTest::enablesAndDisablesTheUnitWhateverTheFlag()
{
    m_systemd->clearCalls();
    ServiceController *controller = ServiceController::instance();
    const bool enabled = controller->serviceEnabled();

    for (const bool enable : {true, true, false, false})
        controller->controlServiceAutostart(enable);

    const QString enableCall = managerCall(EnableCall);
    const QString disableCall = managerCall("DisableUnitFiles asb ([umbravm.service], false)");
    QTRY_COMPARE(m_systemd->calls(),
                 QStringList({enableCall, enableCall, disableCall, disableCall}));
    QCOMPARE(controller->serviceEnabled(), enabled);
}

QTEST_GUILESS_MAIN(ServiceControllerTest)
#include "tst_servicecontroller.moc"
