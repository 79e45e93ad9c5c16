#pragma once

#include "runtime/packagestore.h"
#include "runtime/service.h"

namespace SimRuntime {

/// "storagestats": how much room an app takes (IStorageStatsManager.aidl).
class StorageStatsService : public Service
{
public:
    StorageStatsService(const ServiceEnvironment &environment, const PackageStore *store);

private:
    Answer query(const QString &package) const;

    const PackageStore *m_store;
};

} // namespace SimRuntime
