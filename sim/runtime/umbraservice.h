#pragma once

#include "runtime/callbacks.h"
#include "runtime/packageinstaller.h"
#include "runtime/packagestore.h"
#include "runtime/runningapps.h"
#include "runtime/service.h"

namespace SimRuntime {

/// "umbra": the runtime image's own service. It starts apps, installs APKs and reports to a
/// listener which apps are closed. Not made by AIDL: its replies have no exception word.
class UmbraService : public Service
{
public:
    UmbraService(const ServiceEnvironment &environment, const PackageStore *store,
                 PackageInstaller *installer, RunningApps *running, Callbacks *callbacks);

private:
    const PackageStore *m_store;
    PackageInstaller *m_installer;
    RunningApps *m_running;
    Callbacks *m_callbacks;
};

} // namespace SimRuntime
