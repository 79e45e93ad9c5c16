#include "runtime/storagestatsservice.h"

namespace SimRuntime {

StorageStatsService::StorageStatsService(const ServiceEnvironment &environment,
                                         const PackageStore *store)
    : Service(environment, QStringLiteral("storagestats"),
              QStringLiteral("android.app.usage.IStorageStatsManager"))
    , m_store(store)
{
    add({"queryStatsForPackage",
         {6, 7, 7},
         {{"volumeUuid", FieldKind::String},
          {"packageName", FieldKind::String},
          {"userId", FieldKind::Int32},
          {"callingPackage", FieldKind::String}},
         [this](const Request &request) { return query(request.string("packageName")); }});
}

Answer StorageStatsService::query(const QString &package) const
{
    if (!m_store->contains(package))
        return exceptionAnswer(ExceptionIllegalState, package, environment().sdk);
    const PackageSizes sizes = m_store->sizes(package);
    ParcelWriter writer;
    writer.int32(0); // no exception
    writer.int32(1); // the statistics follow
    writer.int64(sizes.code);
    writer.int64(sizes.data);
    writer.int64(sizes.cache);
    return {StatusOk, writer.parcel()};
}

} // namespace SimRuntime
