#pragma once

#include "runtime/service.h"

#include <QString>

namespace SimRuntime {

/// "alarm": holds the runtime's time zone (IAlarmManager.aidl), kept in
/// data/property/persist.sys.timezone under the data root.
class AlarmService : public Service
{
public:
    AlarmService(const ServiceEnvironment &environment, const QString &dataRoot);

    QString timeZone() const;

private:
    Answer setTimeZone(const QString &zone);

    QString m_path;
};

} // namespace SimRuntime
