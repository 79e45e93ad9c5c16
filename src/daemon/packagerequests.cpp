#include "daemon/packagerequests.h"

#include "config/runtimetext.h"
#include "platform/host/logging.h"

#include <QVector>

bool PackageRequests::hasRoomFor(const QString &filename) const
{
    if (!m_pending.isFull())
        return true;
    qCCritical(daemonLog) << "Too many requests wait for the runtime, refusing:"
                          << RuntimeText::excerpt(filename);
    return false;
}

void PackageRequests::release(const std::function<void(const PackageMod &)> &handOver)
{
    QVector<PackageMod> handled;
    while (!m_pending.isEmpty()) {
        const PackageMod request = m_pending.takeFirst();
        if (handled.contains(request))
            continue;
        handled.append(request);
        handOver(request);
    }
}
