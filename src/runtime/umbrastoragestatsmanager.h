#pragma once

#include "binder/umbrabinderconnection.h"

#include <QString>

/// How much of the runtime's storage a package uses, in bytes.
struct PackageStats
{
    qint64 code = 0;
    qint64 data = 0; ///< cache included
    qint64 cache = 0;
};

/// The daemon's client of the Android storage statistics service "storagestats".
class UmbraStorageStatsManager : public UmbraBinderConnection
{
    Q_OBJECT

public:
    explicit UmbraStorageStatsManager(QObject *parent = nullptr);

    /// Blocks until the runtime answers. A null `volumeUuid` is the internal volume. All zero,
    /// with one critical line, when the service cannot be reached or the call fails; −1 for each
    /// figure that the answer lacks.
    PackageStats queryStatsForPackage(const QString &packageName, const QString &volumeUuid,
                                      int userId);
};
