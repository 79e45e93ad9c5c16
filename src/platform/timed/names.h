#pragma once

#include <QString>

namespace Fjord {
namespace Timed {

/// Names of systemd's time daemon, org.freedesktop.timedate1(5).
inline QString serviceName()
{
    return QStringLiteral("org.freedesktop.timedate1");
}

inline QString objectPath()
{
    return QStringLiteral("/org/freedesktop/timedate1");
}

inline QString interfaceName()
{
    return QStringLiteral("org.freedesktop.timedate1");
}

inline QString propertiesInterface()
{
    return QStringLiteral("org.freedesktop.DBus.Properties");
}

inline QString timezoneProperty()
{
    return QStringLiteral("Timezone");
}

} // namespace Timed
} // namespace Fjord
