#pragma once

#include <QString>

namespace SimRuntime {

/// The host's launcher service, which the runtime tells about its apps.
inline QString launcherName()
{
    return QStringLiteral("umbra.launcher");
}

inline QString launcherDescriptor()
{
    return QStringLiteral("umbra.applications.IUmbraNativeLauncherService");
}

} // namespace SimRuntime
