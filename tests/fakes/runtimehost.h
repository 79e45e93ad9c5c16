#pragma once

#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"

#include <QString>

#include <memory>

/// The host around the daemon as far as the runtime's unit goes: a system bus of the test's own
/// with a FakeSystemd on it. One per process, like the ServiceController that talks to it.
class RuntimeHost
{
public:
    /// Points the process's system bus to the private one, so it comes before any use of that.
    bool start(const QString &activeState = QStringLiteral("inactive"));

    /// Changes the unit's state and waits until the ServiceController has heard of it.
    bool setUnitState(const QString &activeState);

    QString busAddress() const { return m_bus.address(); }
    FakeSystemd &systemd() { return *m_systemd; }

private:
    PrivateBus m_bus;
    std::unique_ptr<FakeSystemd> m_systemd;
};
