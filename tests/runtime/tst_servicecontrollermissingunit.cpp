#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "runtime/servicecontroller.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.service");

QString managerCall(const char *rest)
{
    return QStringLiteral("/org/freedesktop/systemd1 org.freedesktop.systemd1.Manager.") +
           QLatin1String(rest);
}

} // namespace

/// The functions run in this order: the process has one controller.
class ServiceControllerMissingUnitTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void saysThatTheUnitCannotBeLoaded();
    void listensToNothing();
    void startsAndStopsAllTheSame();

private:
    PrivateBus m_bus;
    std::unique_ptr<FakeSystemd> m_systemd;
};

void ServiceControllerMissingUnitTest::initTestCase()
{
    QVERIFY(m_bus.start());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    FakeSystemd::Unit unit;
    unit.loadable = false;
    m_systemd = std::make_unique<FakeSystemd>(m_bus.address(), unit);
    QVERIFY(m_systemd->isUp());
}

void ServiceControllerMissingUnitTest::saysThatTheUnitCannotBeLoaded()
{
    const ServiceController *controller = ServiceController::instance();

    QCOMPARE(controller->serviceState(), QStringLiteral("invalid"));
    QCOMPARE(controller->serviceEnabled(), false);
    QCOMPARE(m_systemd->calls(), QStringList({managerCall("Subscribe  ()"),
                                              managerCall("LoadUnit s (umbravm.service)")}));
    QCOMPARE(takeLog(QtCriticalMsg, Category),
             QStringList(QStringLiteral("Could not find Umbra VM service: \"Unit is masked.\"")));
    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList());
}

void ServiceControllerMissingUnitTest::listensToNothing()
{
    ServiceController *controller = ServiceController::instance();
    m_systemd->clearCalls();

    m_systemd->changeProperties(FakeSystemd::properties(
        QStringLiteral("active"), QStringLiteral("running"), QStringLiteral("enabled")));
    controller->controlServiceAutostart(true);
    QTRY_COMPARE(m_systemd->calls().size(), 1);
    QCoreApplication::processEvents();

    QCOMPARE(controller->serviceState(), QStringLiteral("invalid"));
    QCOMPARE(controller->serviceEnabled(), false);
}

void ServiceControllerMissingUnitTest::startsAndStopsAllTheSame()
{
    m_systemd->clearCalls();

    ServiceController::instance()->controlService(true);
    ServiceController::instance()->controlService(false);

    QTRY_COMPARE(m_systemd->calls(),
                 QStringList({managerCall("StartUnit ss (umbravm.service, replace)"),
                              managerCall("StopUnit ss (umbravm.service, replace)")}));
}

QTEST_GUILESS_MAIN(ServiceControllerMissingUnitTest)
#include "tst_servicecontrollermissingunit.moc"
