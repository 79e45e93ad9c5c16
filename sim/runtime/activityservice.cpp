#include "runtime/activityservice.h"

namespace SimRuntime {

namespace {

// Results of startActivity (AOSP frameworks/base, ActivityManager.START_...).
constexpr qint32 StartSuccess = 0;
constexpr qint32 StartClassNotFound = -92;

} // namespace

ActivityService::ActivityService(const ServiceEnvironment &environment, const PackageStore *store,
                                 RunningApps *running)
    : Service(environment, QStringLiteral("activity"),
              QStringLiteral("android.app.IActivityManager"))
    , m_store(store)
    , m_running(running)
{
    add({"startActivity",
         {3, 6, 7},
         {{"caller", FieldKind::Object},
          {"callingPackage", FieldKind::String},
          {"intent", FieldKind::Intent},
          {"resolvedType", FieldKind::String},
          {"resultTo", FieldKind::Object},
          {"resultWho", FieldKind::String},
          {"requestCode", FieldKind::Int32},
          {"flags", FieldKind::Int32},
          {"profilerInfo", FieldKind::AbsentBundle},
          {"options", FieldKind::AbsentBundle}},
         [this](const Request &request) { return startActivity(request); }});
    add({"forceStopPackage",
         {72, 77, 68},
         {{"packageName", FieldKind::String}, {"userId", FieldKind::Int32}},
         [this](const Request &request) {
             m_running->close(request.string("packageName"));
             return voidAnswer();
         }});
}

Answer ActivityService::startActivity(const Request &request)
{
    const QJsonObject intent = request.intent("intent");
    const QString package = intent.value(QStringLiteral("componentPackage")).toString();
    if (package.isEmpty())
        return int32Answer(StartSuccess); // the chooser or a system activity takes it
    if (!m_store->contains(package) && !package.startsWith(QLatin1String("com.android.")))
        return int32Answer(StartClassNotFound);
    m_running->start(package);
    return int32Answer(StartSuccess);
}

} // namespace SimRuntime
