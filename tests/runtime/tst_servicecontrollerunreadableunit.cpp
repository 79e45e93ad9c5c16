#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "runtime/servicecontroller.h"
#include "support/testcase.h"

#include <QtTest>

/// The functions run in this order: the process has one controller.
class ServiceControllerUnreadableUnitTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void startsWithoutAState();
    void followsTheUnitAllTheSame();

private:
    PrivateBus m_bus;
    std::unique_ptr<FakeSystemd> m_systemd;
};

void ServiceControllerUnreadableUnitTest::initTestCase()
{
    QVERIFY(m_bus.start());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    FakeSystemd::Unit unit;
    unit.readable = false;
    m_systemd = std::make_unique<FakeSystemd>(m_bus.address(), unit);
    QVERIFY(m_systemd->isUp());
}

void ServiceControllerUnreadableUnitTest::startsWithoutAState()
{
    const ServiceController *controller = ServiceController::instance();

    QCOMPARE(controller->serviceState(), QString());
    QCOMPARE(controller->serviceEnabled(), false);
    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.service")),
             QStringList(QStringLiteral("Umbra VM is \"\" ( \"\" )")));
}

void ServiceControllerUnreadableUnitTest::followsTheUnitAllTheSame()
{
    const ServiceController *controller = ServiceController::instance();

    m_systemd->changeProperties(FakeSystemd::properties(
        QStringLiteral("active"), QStringLiteral("running"), QStringLiteral("enabled")));

    QTRY_COMPARE(controller->serviceState(), QStringLiteral("active"));
    QCOMPARE(controller->serviceEnabled(), true);
}

QTEST_GUILESS_MAIN(ServiceControllerUnreadableUnitTest)
#include "tst_servicecontrollerunreadableunit.moc"
