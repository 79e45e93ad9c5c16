#pragma once

#include "platform/binder/localobject.h"
#include "platform/binder/types.h"

#include <functional>
#include <memory>
#include <set>

namespace Binder {

class Process;
class RemoteObject;
class ServiceName;

/// The runtime's service manager, reached through one binder device. All ServiceManager objects
/// of a process that name the same device share one open file, so that objects and handles of one
/// can travel through another.
class ServiceManager
{
public:
    /// Opens the device (a zero-terminated path). Null when it cannot be opened or is not a
    /// 64-bit binder device; the caller, who knows what it means, says so (here it is one debug
    /// line). A runtime whose service manager is not up yet is no failure: names are then simply
    /// not found.
    static std::unique_ptr<ServiceManager> open(const char *device);

    /// Removes the handlers that were added through this object.
    ~ServiceManager();
    ServiceManager(const ServiceManager &) = delete;
    ServiceManager &operator=(const ServiceManager &) = delete;

    /// Whether the device has failed for good: nothing that came from here works any more, and only
    /// an object that is opened anew finds anything.
    bool isLost() const;

    /// Asks for a service by name; blocks until the service manager answers. Null when it is not
    /// registered or there is no service manager.
    std::shared_ptr<RemoteObject> getService(const char *name);

    /// `handler` runs from the event loop, never inside this call, whenever a look finds the name
    /// registered, the first time at once if it already is, until it is removed. While any handler
    /// waits, the service manager is asked once a second, after a minute once every eight seconds,
    /// because the Android releases that we talk to cannot notify of registrations; with no
    /// handler there are no wake-ups.
    HandlerId addRegistrationHandler(const char *name, std::function<void()> handler);
    void removeHandler(HandlerId id);

    /// A new object whose calls are served by `call`. Owned by the caller; null on failure.
    std::unique_ptr<LocalObject> createLocalObject(const char *descriptor, IncomingCall call);

    /// Registers `object` under `name` and keeps it registered, also with a service manager that
    /// comes up later or anew, while the returned handle and the object live. The first attempt
    /// is made before this returns; a refusal is logged and not tried again with the same service
    /// manager.
    std::unique_ptr<ServiceName> registerName(const char *name, const LocalObject &object);

private:
    explicit ServiceManager(std::shared_ptr<Process> process);

    std::shared_ptr<Process> m_process;
    std::set<HandlerId> m_handlers;
};

} // namespace Binder
