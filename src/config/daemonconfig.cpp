#include "config/daemonconfig.h"

#include "config/buildproperties.h"
#include "config/logging.h"
#include "config/pathmapping.h"

#include <QFile>

namespace {

constexpr char DataRootVariable[] = "ANDROID_DATA_ROOT";

/// Far above any real file, which has a few KiB: a damaged image must not fill the memory.
constexpr qint64 MaxBuildPropertiesBytes = Q_INT64_C(1024) * 1024;

BuildProperties &buildProperties()
{
    static BuildProperties properties;
    return properties;
}

void readBuildProperties()
{
    BuildProperties &known = buildProperties();
    QFile file(QStringLiteral("/opt/umbra//build.prop"));
    if (file.open(QIODevice::ReadOnly)) {
        known = parseBuildProperties(file.read(MaxBuildPropertiesBytes), known);
        file.close();
    }
    if (known.sdkVersion == 0)
        qCCritical(configLog) << "Cannot find sdk version in"
                              << "/opt/umbra/"
                              << "build properties";
}

QString dataRootFromEnvironment()
{
    if (!qEnvironmentVariableIsSet(DataRootVariable))
        return QStringLiteral("/home/.android");
    QString dataRoot = QString::fromUtf8(qgetenv(DataRootVariable));
    qCDebug(configLog) << "Using custom path for apps + data: " << dataRoot;
    return dataRoot;
}

} // namespace

DaemonConfig::DaemonConfig()
    : m_dataRoot(dataRootFromEnvironment())
{
}

QString DaemonConfig::path(SymbolicPath symbolicPath) const
{
    switch (symbolicPath) {
    case DataRoot:
        return m_dataRoot;
    case AppsDir:
        return QStringLiteral("%1/data/app/").arg(m_dataRoot);
    case StagingIncomingDir:
        return QStringLiteral("%1/data/xrs-staging/app/incoming/").arg(m_dataRoot);
    case StagingPackagedDir:
        return QStringLiteral("%1/data/xrs-staging/app/packaged/").arg(m_dataRoot);
    case AppDataDir:
        return QStringLiteral("%1/data/data/").arg(m_dataRoot);
    }
    qCWarning(configLog) << "Cannot handle symbolic path:" << static_cast<int>(symbolicPath);
    return QString();
}

QString DaemonConfig::toAndroidPath(const QString &hostPath)
{
    return PathMapping::toAndroidPath(hostPath);
}

QUrl DaemonConfig::toAndroidUrl(const QString &hostPath)
{
    return PathMapping::toAndroidUrl(hostPath);
}

int DaemonConfig::androidSdkVersion()
{
    if (buildProperties().sdkVersion == 0)
        readBuildProperties();
    return buildProperties().sdkVersion;
}

QString DaemonConfig::androidRelease()
{
    if (buildProperties().release.isEmpty())
        readBuildProperties();
    return buildProperties().release;
}

QString DaemonConfig::androidSecurityPatch()
{
    if (buildProperties().securityPatch.isEmpty())
        readBuildProperties();
    return buildProperties().securityPatch;
}
