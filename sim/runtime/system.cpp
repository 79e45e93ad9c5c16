#include "runtime/system.h"

#include "runtime/activityservice.h"
#include "runtime/compositorservice.h"
#include "runtime/launcherservice.h"
#include "runtime/packageservice.h"
#include "runtime/parcelwriter.h"
#include "runtime/storagestatsservice.h"
#include "runtime/umbraservice.h"

#include <QLoggingCategory>
#include <QTimer>

#include <cerrno>
#include <cstring>

Q_LOGGING_CATEGORY(lcSystem, "sim.runtime.system")

namespace SimRuntime {

namespace {

constexpr quint32 AppClosed = 1; // of the app listener

} // namespace

System::System(const Options &options, Recorder *recorder, Faults *faults)
    : m_options(options)
    , m_recorder(recorder)
    , m_faults(faults)
    , m_packages(options.dataRoot, options.sdk, options.storageLimit)
{
}

System::~System() = default;

bool System::start()
{
    auto driver = Binder::Driver::open(m_options.device.constData());
    if (driver == nullptr) {
        qCCritical(lcSystem) << "Cannot open" << m_options.device << strerror(errno);
        return false;
    }
    m_loop = std::make_unique<BinderLoop>(std::move(driver));
    connect(m_loop.get(), &BinderLoop::lost, this, &System::lost);

    ServiceEnvironment environment;
    environment.sdk = m_options.sdk;
    environment.loop = m_loop.get();
    environment.recorder = m_recorder;
    environment.faults = m_faults;
    m_names = std::make_unique<ContextManager>(environment);
    if (!m_loop->start() || !m_loop->becomeContextManager(m_names.get()))
        return false;

    m_packages.load();
    m_callbacks = std::make_unique<Callbacks>(m_loop.get(), m_options.sdk);
    m_installer = std::make_unique<PackageInstaller>(&m_packages, m_callbacks.get());
    m_caller = std::make_unique<Caller>(m_options.caller);
    m_announcer = std::make_unique<Announcer>(m_caller.get(), &m_packages, m_options.sdk);
    createServices(environment);
    connectEvents();
    registerNext(0);
    return true;
}

void System::createServices(const ServiceEnvironment &environment)
{
    auto deviceIdle =
        std::make_unique<DeviceIdleService>(environment, m_options.dataRoot, &m_packages);
    auto alarm = std::make_unique<AlarmService>(environment, m_options.dataRoot);
    m_deviceIdle = deviceIdle.get();
    m_alarm = alarm.get();
    m_services.push_back(std::make_unique<CompositorService>(environment, &m_running));
    m_services.push_back(std::make_unique<PackageService>(environment, &m_packages,
                                                          m_installer.get(), m_callbacks.get()));
    m_services.push_back(std::make_unique<ActivityService>(environment, &m_packages, &m_running));
    m_services.push_back(std::move(alarm));
    m_services.push_back(std::make_unique<StorageStatsService>(environment, &m_packages));
    m_services.push_back(std::move(deviceIdle));
    m_services.push_back(std::make_unique<UmbraService>(environment, &m_packages, m_installer.get(),
                                                        &m_running, m_callbacks.get()));
}

void System::connectEvents()
{
    connect(m_names.get(), &ContextManager::added, this, [this](const QString &name) {
        if (m_booted && name == launcherName())
            m_announcer->announceAll();
    });
    connect(m_installer.get(), &PackageInstaller::installed, m_announcer.get(),
            &Announcer::announce);
    connect(m_installer.get(), &PackageInstaller::removed, this, [this](const QString &package) {
        m_running.close(package);
        m_announcer->announceRemoval(package);
    });
    connect(&m_running, &RunningApps::closed, this, &System::onClosed);
}

// A real boot takes its time, and services come up one after the other.
void System::registerNext(std::size_t index)
{
    if (index == m_services.size()) {
        onBooted();
        return;
    }
    const auto begin = m_options.bootDelayMs * int(index) / int(m_services.size());
    const auto end = m_options.bootDelayMs * int(index + 1) / int(m_services.size());
    const auto registerIt = [this, index] {
        Service *service = m_services.at(index).get();
        m_names->addOwn(service->name(), m_loop->publish(service));
        registerNext(index + 1);
    };
    if (end == begin)
        registerIt();
    else
        QTimer::singleShot(end - begin, this, registerIt);
}

void System::onBooted()
{
    m_booted = true;
    qCInfo(lcSystem) << "Booted with" << m_packages.names().size() << "apps";
    if (m_names->isRegistered(launcherName()))
        m_announcer->announceAll();
}

void System::onClosed(const QString &package)
{
    ParcelWriter request = m_callbacks->request(CallbackKind::AppListener);
    request.string16(package);
    m_callbacks->call(m_callbacks->last(CallbackKind::AppListener), AppClosed, request);
}

} // namespace SimRuntime
