#pragma once

#include "daemon/packagemod.h"
#include "daemon/waitinglist.h"

#include <QVector>

#include <functional>

/// The requests made while the runtime was not ready, in order of arrival. They live in memory
/// only.
class PackageRequests
{
public:
    /// False, after one critical line, when a request about this file or app may be refused.
    bool hasRoomFor(const QString &filename) const;

    /// False, with a warning now and then, when too many wait already.
    bool add(const PackageMod &request) { return m_pending.add(request); }

    /// Empties the list: hands each request over, oldest first, but only the first of several
    /// equal ones. A request that is added meanwhile is handed over too. When `handOver` returns
    /// false nobody was there to take the request, which waits on with those behind it.
    void release(const std::function<bool(const PackageMod &)> &handOver);

private:
    void keep(const PackageMod &refused, const QVector<PackageMod> &handled);

    WaitingList<PackageMod> m_pending;
};
