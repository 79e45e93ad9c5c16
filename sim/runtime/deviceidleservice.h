#pragma once

#include "runtime/packagestore.h"
#include "runtime/service.h"

#include <QStringList>

namespace SimRuntime {

/// "deviceidle": the apps that may run in the background (IDeviceIdleController.aidl), kept in
/// data/system/deviceidle.json under the data root. Apps that are not installed cannot be added.
class DeviceIdleService : public Service
{
public:
    DeviceIdleService(const ServiceEnvironment &environment, const QString &dataRoot,
                      const PackageStore *store);

    const QStringList &whitelist() const { return m_whitelist; }

private:
    void load();
    Answer save() const;

    QString m_path;
    const PackageStore *m_store;
    QStringList m_whitelist;
};

} // namespace SimRuntime
