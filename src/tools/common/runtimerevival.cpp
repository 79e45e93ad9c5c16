#include "tools/common/runtimerevival.h"

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"

Outcome reviveFailedRuntime(const RuntimeUnit &unit, DaemonClient &daemon)
{
    if (unit.read().activeState != QLatin1String("failed"))
        return {};
    return daemon.finish(daemon.proxy().controlService(true));
}
