#pragma once

#include "daemon/packagemod.h"

#include <QVector>

#include <functional>

/// The requests made while the runtime was not ready, in order of arrival. They live in memory
/// only.
class PackageRequests
{
public:
    void add(const PackageMod &request);

    /// Empties the list: hands each request over, oldest first, but only the first of several
    /// equal ones. A request that is added meanwhile is handed over too.
    void release(const std::function<void(const PackageMod &)> &handOver);

private:
    QVector<PackageMod> m_pending;
};
