#include "daemon/installrequest.h"

#include "config/daemonconfig.h"
#include "daemon/packageform.h"

namespace {

bool isSilent(const QString &filename, PackageSource source, const DaemonConfig &config)
{
    return source != PackageSource::File ||
           filename == config.path(DaemonConfig::StagingPackagedDir) + fileName(filename);
}

QString runtimePath(const QString &hostPath, const QString &dataRoot)
{
    return hostPath.startsWith(dataRoot) ? hostPath.mid(dataRoot.size()) : hostPath;
}

} // namespace

PackageMod installRequest(const QString &filename, const QString &staged, PackageSource source,
                          const DaemonConfig &config)
{
    return {runtimePath(staged, config.path(DaemonConfig::DataRoot)), true,
            isSilent(filename, source, config)};
}
