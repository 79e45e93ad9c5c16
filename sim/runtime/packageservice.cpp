#include "runtime/packageservice.h"

namespace SimRuntime {

namespace {

constexpr quint32 OnRemoveCompleted = 1; // IPackageDataObserver
constexpr int NoUid = -1;

} // namespace

PackageService::PackageService(const ServiceEnvironment &environment, PackageStore *store,
                               PackageInstaller *installer, Callbacks *callbacks)
    : Service(environment, QStringLiteral("package"),
              QStringLiteral("android.content.pm.IPackageManager"))
    , m_store(store)
    , m_installer(installer)
    , m_callbacks(callbacks)
{
    add({"getPackageUid",
         everyLevel(5),
         {{"packageName", FieldKind::String},
          {"flags", FieldKind::Int32},
          {"userId", FieldKind::Int32}},
         [this](const Request &request) { return uid(request); }});
    add({"installPackageAsUser",
         {60, 0, 0},
         {{"originPath", FieldKind::String},
          {"observer", FieldKind::Object},
          {"flags", FieldKind::Int32},
          {"installerPackageName", FieldKind::String},
          {"userId", FieldKind::Int32}},
         [this](const Request &request) { return install(request); }});
    add({"deletePackageAsUser",
         {64, 63, 66},
         {{"packageName", FieldKind::String},
          {"versionCode", FieldKind::Int32},
          {"observer", FieldKind::Object},
          {"userId", FieldKind::Int32},
          {"flags", FieldKind::Int32}},
         [this](const Request &request) { return remove(request); }});
    add({"deleteApplicationCacheFilesAsUser",
         {100, 100, 103},
         {{"packageName", FieldKind::String},
          {"userId", FieldKind::Int32},
          {"observer", FieldKind::Object}},
         [this](const Request &request) { return clear(request, &PackageStore::clearCache); }});
    add({"clearApplicationUserData",
         {101, 101, 104},
         {{"packageName", FieldKind::String},
          {"observer", FieldKind::Object},
          {"userId", FieldKind::Int32}},
         [this](const Request &request) { return clear(request, &PackageStore::clearData); }});
}

Answer PackageService::uid(const Request &request) const
{
    const QString package = request.string("packageName");
    return int32Answer(m_store->contains(package) ? m_store->find(package).uid : NoUid);
}

Answer PackageService::install(const Request &request)
{
    m_installer->install(
        request.string("originPath"), request.int32("flags"),
        m_callbacks->keep(CallbackKind::InstallObserver, request.object("observer")));
    return voidAnswer();
}

Answer PackageService::remove(const Request &request)
{
    m_installer->remove(
        request.string("packageName"), request.int32("flags"),
        m_callbacks->keep(CallbackKind::DeleteObserver, request.object("observer")));
    return voidAnswer();
}

Answer PackageService::clear(const Request &request, bool (PackageStore::*what)(const QString &))
{
    const QString package = request.string("packageName");
    const bool succeeded = (m_store->*what)(package);
    const auto observer = m_callbacks->keep(CallbackKind::DataObserver, request.object("observer"));
    ParcelWriter result = m_callbacks->request(CallbackKind::DataObserver);
    result.string16(package);
    result.boolean(succeeded);
    m_callbacks->call(observer, OnRemoveCompleted, result);
    return voidAnswer();
}

} // namespace SimRuntime
