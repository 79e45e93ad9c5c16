#pragma once

#include "platform/binder/types.h"

#include <memory>

namespace Binder {

class Process;

/// Keeps a local object registered under a name; made by ServiceManager::registerName().
///
/// Releasing it (deletion) ends the upkeep. Android's service manager has no call to withdraw a
/// name: there it stays, pointing to the object, until another object takes it or the device is
/// closed.
class ServiceName
{
public:
    ServiceName(std::shared_ptr<Process> process, quint64 registration);
    ~ServiceName();
    ServiceName(const ServiceName &) = delete;
    ServiceName &operator=(const ServiceName &) = delete;

private:
    std::shared_ptr<Process> m_process;
    quint64 m_registration;
};

} // namespace Binder
