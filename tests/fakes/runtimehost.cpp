#include "fakes/runtimehost.h"

#include "runtime/servicecontroller.h"

#include <QtTest>

bool RuntimeHost::start(const QString &activeState)
{
    if (!m_bus.start())
        return false;
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    FakeSystemd::Unit unit;
    unit.properties =
        FakeSystemd::properties(activeState, QStringLiteral("dead"), QStringLiteral("disabled"));
    m_systemd = std::make_unique<FakeSystemd>(m_bus.address(), unit);
    return m_systemd->isUp() && ServiceController::instance()->serviceState() == activeState;
}

bool RuntimeHost::setUnitState(const QString &activeState)
{
    const ServiceController *controller = ServiceController::instance();
    if (controller->serviceState() == activeState)
        return true;
    m_systemd->changeProperties({{QStringLiteral("ActiveState"), activeState}});
    return QTest::qWaitFor([&] { return controller->serviceState() == activeState; });
}
