#include "daemon/packagerequests.h"

#include "config/runtimetext.h"
#include "platform/host/logging.h"

#include <climits>

namespace {

/// A request may name its app by another name or path than its caller does. What was accepted must
/// not be lost for that.
constexpr qint64 OtherNameBytes = PATH_MAX * qint64{sizeof(QChar)};

} // namespace

bool PackageRequests::hasRoomFor(const QString &filename) const
{
    if (m_pending.hasRoomFor(requestSize(filename) + OtherNameBytes))
        return true;
    qCCritical(daemonLog) << "Too many requests wait for the runtime, refusing:"
                          << RuntimeText::excerpt(filename);
    return false;
}

void PackageRequests::release(const std::function<bool(const PackageMod &)> &handOver)
{
    QVector<PackageMod> handled;
    while (!m_pending.isEmpty()) {
        const PackageMod request = m_pending.takeFirst();
        if (handled.contains(request))
            continue;
        if (!handOver(request)) {
            keep(request, handled);
            return;
        }
        handled.append(request);
    }
}

void PackageRequests::keep(const PackageMod &refused, const QVector<PackageMod> &handled)
{
    QVector<PackageMod> waiting{refused};
    while (!m_pending.isEmpty()) {
        const PackageMod request = m_pending.takeFirst();
        if (!handled.contains(request))
            waiting.append(request);
    }
    while (!waiting.isEmpty())
        m_pending.putBack(waiting.takeLast());
}
