#include "runtime/compositorservice.h"

namespace SimRuntime {

CompositorService::CompositorService(const ServiceEnvironment &environment,
                                     const RunningApps *running)
    : Service(environment, QStringLiteral("SurfaceFlinger"),
              QStringLiteral("android.ui.ISurfaceComposer"))
    , m_running(running)
{
    add({"hasWindow",
         everyLevel(103),
         {{"packageName", FieldKind::String}},
         [this](const Request &request) {
             return plainInt32Answer(m_running->isRunning(request.string("packageName")) ? 1 : 0);
         }});
}

Answer CompositorService::answerToWrongToken() const
{
    return statusAnswer(StatusPermissionDenied);
}

Answer CompositorService::answerToBadRequest() const
{
    return statusAnswer(StatusPermissionDenied);
}

} // namespace SimRuntime
