#include "daemon/packagerequests.h"

#include <QVector>

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
