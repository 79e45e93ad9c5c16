#pragma once

#include "runtime/packagestore.h"
#include "runtime/runningapps.h"
#include "runtime/service.h"

namespace SimRuntime {

/// "activity": Android's activity manager (IActivityManager.aidl). An app counts as running once
/// an Intent that names it has been started.
class ActivityService : public Service
{
public:
    ActivityService(const ServiceEnvironment &environment, const PackageStore *store,
                    RunningApps *running);

private:
    Answer startActivity(const Request &request);

    const PackageStore *m_store;
    RunningApps *m_running;
};

} // namespace SimRuntime
