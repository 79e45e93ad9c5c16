#pragma once

#include "sim/deviceundertest.h"
#include "sim/party.h"
#include "support/testcase.h"

#include <QStringList>

#include <memory>

/// Base of the driver tests: each test function has a device and, on it, a context manager.
///
/// A test that misuses the driver on purpose says so beforehand; any other misuse fails it, where
/// the device tells.
class DriverTest : public TestCase
{
    Q_OBJECT

protected:
    static constexpr int ObjectSize = 24; ///< of an object among the data: a flat_binder_object
    static const QStringList Failed;      ///< all that is returned for a call that did not go out

    QByteArray device() const { return m_device->path(); }
    Party &manager() { return *m_manager; }

    /// The context manager ends as by a crash, or by closing the device; another comes up.
    void killManager() { m_manager->kill(), m_manager.reset(); }
    void startManager();

    void expectMisuse(const char *text) { m_expectedMisuse.append(QLatin1String(text)); }

    /// For a test that cannot foresee them.
    void expectAnyMisuse() { m_expectsAnyMisuse = true; }

    /// Lets `receiver` have a handle of its own to the owner's object, which is announced before,
    /// by way of the context manager, who keeps nothing. The handle has one strong reference.
    quint32 handOver(Party &owner, quint64 id, Party &receiver, quint32 objectFlags = 0x113);

    /// A call from one to the other and back, with everything freed.
    static Return callAndServe(Party &caller, quint32 handle, Party &callee,
                               const Message &request = {}, const Message &reply = {});

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

private:
    std::unique_ptr<DeviceUnderTest> m_device;
    std::unique_ptr<Party> m_manager;
    QStringList m_expectedMisuse;
    bool m_expectsAnyMisuse = false;
};
