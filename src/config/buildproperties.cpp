#include "config/buildproperties.h"

#include <QStringList>

bool operator==(const BuildProperties &left, const BuildProperties &right)
{
    return left.sdkVersion == right.sdkVersion && left.release == right.release &&
           left.securityPatch == right.securityPatch;
}

BuildProperties parseBuildProperties(const QByteArray &content, BuildProperties known)
{
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray &line : lines) {
        const QStringList pieces = QString::fromUtf8(line.trimmed()).split(QLatin1Char('='));
        const QString key = pieces.value(0);
        const QString value = pieces.value(1);
        if (key == QLatin1String("ro.build.version.sdk"))
            known.sdkVersion = value.toInt();
        else if (key == QLatin1String("ro.build.version.release"))
            known.release = value;
        else if (key == QLatin1String("ro.build.version.security_patch"))
            known.securityPatch = value;
    }
    return known;
}
