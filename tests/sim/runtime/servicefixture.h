#pragma once

#include "runtime/faults.h"
#include "runtime/interfacetoken.h"
#include "runtime/recorder.h"
#include "runtime/service.h"
#include "sim/runtime/scripteddriver.h"

#include <QString>

#include <memory>

/// What a service needs around it, and calls to it that do not go through a driver.
class ServiceFixture
{
public:
    explicit ServiceFixture(int sdk = 28, const QString &record = QString());

    const SimRuntime::ServiceEnvironment &environment() const { return m_environment; }
    SimRuntime::Faults &faults() { return m_faults; }
    SimRuntime::BinderLoop &loop() { return *m_loop; }
    ScriptedDriver &driver() { return *m_driver; }

    /// The uid that later calls come from; root at first.
    void setUid(quint32 uid) { m_uid = uid; }

    /// A request that begins with the token of this descriptor.
    SimRuntime::ParcelWriter request(const char *descriptor) const;

    SimRuntime::IncomingCall callOf(quint32 code, const SimRuntime::ParcelWriter &request) const;

private:
    ScriptedDriver *m_driver;
    std::unique_ptr<SimRuntime::BinderLoop> m_loop;
    SimRuntime::Recorder m_recorder;
    SimRuntime::Faults m_faults;
    SimRuntime::ServiceEnvironment m_environment;
    quint32 m_uid = 0;
};
