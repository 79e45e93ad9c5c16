#pragma once

#include "runtime/runningapps.h"
#include "runtime/service.h"

namespace SimRuntime {

/// "SurfaceFlinger": the compositor. Only the runtime image's own addition to it is here: whether
/// an app has a window. A native service: it answers without exception words.
class CompositorService : public Service
{
public:
    CompositorService(const ServiceEnvironment &environment, const RunningApps *running);

protected:
    Answer answerToWrongToken() const override;
    Answer answerToBadRequest() const override;

private:
    const RunningApps *m_running;
};

} // namespace SimRuntime
