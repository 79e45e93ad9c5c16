#pragma once

#include "runtime/alarmservice.h"
#include "runtime/announcer.h"
#include "runtime/binderloop.h"
#include "runtime/callbacks.h"
#include "runtime/caller.h"
#include "runtime/contextmanager.h"
#include "runtime/deviceidleservice.h"
#include "runtime/options.h"
#include "runtime/packageinstaller.h"
#include "runtime/packagestore.h"
#include "runtime/runningapps.h"
#include "runtime/service.h"

#include <QObject>

#include <memory>
#include <vector>

namespace SimRuntime {

/// One boot of the runtime: the open device with the service manager and all services on it.
class System : public QObject
{
    Q_OBJECT

public:
    System(const Options &options, Recorder *recorder, Faults *faults);
    ~System() override;

    /// Opens the device and begins to boot. False, with a line that says why, on failure.
    bool start();

    ContextManager &names() { return *m_names; }
    Callbacks &callbacks() { return *m_callbacks; }
    Caller &caller() { return *m_caller; }
    Announcer &announcer() { return *m_announcer; }
    RunningApps &running() { return m_running; }
    const PackageStore &packages() const { return m_packages; }
    QStringList whitelist() const { return m_deviceIdle->whitelist(); }
    QString timeZone() const { return m_alarm->timeZone(); }

    /// Whether all services are registered.
    bool isBooted() const { return m_booted; }

Q_SIGNALS:
    /// The device is gone.
    void lost();

private:
    void createServices(const ServiceEnvironment &environment);
    void connectEvents();
    void registerNext(std::size_t index);
    void onBooted();
    void onClosed(const QString &package);

    Options m_options;
    Recorder *m_recorder;
    Faults *m_faults;
    PackageStore m_packages;
    RunningApps m_running;
    std::unique_ptr<BinderLoop> m_loop;
    std::unique_ptr<ContextManager> m_names;
    std::unique_ptr<Callbacks> m_callbacks;
    std::unique_ptr<PackageInstaller> m_installer;
    std::vector<std::unique_ptr<Service>> m_services; ///< in the order of registration
    DeviceIdleService *m_deviceIdle = nullptr;        ///< one of the services
    AlarmService *m_alarm = nullptr;                  ///< one of the services
    std::unique_ptr<Caller> m_caller;
    std::unique_ptr<Announcer> m_announcer;
    bool m_booted = false;
};

} // namespace SimRuntime
