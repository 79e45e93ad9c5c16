#include "daemon/packageform.h"

QString fileName(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString packageForm(const QString &name)
{
    QString package = fileName(name);
    if (!package.endsWith(QLatin1String(".apk")))
        return package;
    return package.left(package.lastIndexOf(QLatin1Char('.')));
}
