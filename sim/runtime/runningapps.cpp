#include "runtime/runningapps.h"

namespace SimRuntime {

void RunningApps::start(const QString &package)
{
    m_running.insert(package);
}

void RunningApps::close(const QString &package)
{
    if (m_running.remove(package))
        Q_EMIT closed(package);
}

QStringList RunningApps::all() const
{
    QStringList packages = m_running.values();
    packages.sort();
    return packages;
}

} // namespace SimRuntime
