#include "binder/sdklevelsource.h"

#include "config/daemonconfig.h"
#include "platform/binder/sdklevel.h"

namespace UmbraBinder {

void provideSdkLevel()
{
    Binder::setSdkLevelSource(&DaemonConfig::androidSdkVersion);
}

} // namespace UmbraBinder
