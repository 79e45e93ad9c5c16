#include "daemon/packagerequests.h"

void PackageRequests::add(const PackageMod &request)
{
    m_pending.append(request);
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
