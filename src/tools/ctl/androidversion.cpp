#include "tools/ctl/androidversion.h"

namespace AndroidVersion {

QString text(const AndroidVersionData &version)
{
    const QString level = QStringLiteral("SDK %1").arg(version.sdkVersion);
    const QString release =
        version.release.isEmpty() ? level : QStringLiteral("%1 (%2)").arg(version.release, level);
    return version.securityPatch.isEmpty()
               ? release
               : QStringLiteral("%1, security patch %2").arg(release, version.securityPatch);
}

} // namespace AndroidVersion
