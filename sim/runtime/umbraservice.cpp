#include "runtime/umbraservice.h"

namespace SimRuntime {

UmbraService::UmbraService(const ServiceEnvironment &environment, const PackageStore *store,
                           PackageInstaller *installer, RunningApps *running, Callbacks *callbacks)
    : Service(environment, QStringLiteral("umbra"),
              QStringLiteral("umbra.applications.IUmbraService"))
    , m_store(store)
    , m_installer(installer)
    , m_running(running)
    , m_callbacks(callbacks)
{
    add({"launchPackage",
         everyLevel(1),
         {{"packageName", FieldKind::String}},
         [this](const Request &request) {
             const QString package = request.string("packageName");
             if (!m_store->contains(package))
                 return plainInt32Answer(0);
             m_running->start(package);
             return plainInt32Answer(1);
         }});
    add({"installPackage",
         everyLevel(2),
         {{"path", FieldKind::String}, {"observer", FieldKind::Object}},
         [this](const Request &request) {
             m_installer->install(
                 request.string("path"), InstallReplaceExisting,
                 m_callbacks->keep(CallbackKind::InstallObserver, request.object("observer")));
             return plainInt32Answer(1);
         }});
    add({"setListener",
         everyLevel(15),
         {{"listener", FieldKind::Object}},
         [this](const Request &request) {
             m_callbacks->keep(CallbackKind::AppListener, request.object("listener"));
             return Answer{};
         }});
}

} // namespace SimRuntime
