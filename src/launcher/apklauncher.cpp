#include "launcher/apklauncher.h"

namespace {

QStringList items(const QString &list)
{
    return list.split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

/// Empty parts stay, as the runtime's announcements have always been read; but no text is no item.
QStringList mimeTypeItems(const QString &list)
{
    return list.isEmpty() ? QStringList() : list.split(QLatin1Char(';'), Qt::KeepEmptyParts);
}

} // namespace

ApkLauncher::ApkLauncher(const QString &newLabel, const QString &newCaption,
                         const QByteArray &newIcon, const QString &newPackageName,
                         const QString &newClassName, const QString &newPackageVersion,
                         const QString &mimeTypeList, const QString &urlSchemeList,
                         const QString &urlHandlerList, const QString &shareMimeTypeList,
                         bool newExtraFlag, bool newMulti)
    : label(newLabel)
    , caption(newCaption)
    , icon(newIcon)
    , packageName(newPackageName)
    , className(newClassName)
    , packageVersion(newPackageVersion)
    , mimeTypes(mimeTypeItems(mimeTypeList))
    , shareMimeTypes(items(shareMimeTypeList))
    , multi(newMulti)
    , extraFlag(newExtraFlag)
{
    const QStringList schemes = items(urlSchemeList);
    for (const QString &scheme : schemes)
        mimeTypes.append(QStringLiteral("x-scheme-handler/%1").arg(scheme));
    const QStringList handlers = items(urlHandlerList);
    for (const QString &handler : handlers)
        mimeTypes.append(QStringLiteral("x-url-handler/%1").arg(handler));
}

bool operator==(const ApkLauncher &left, const ApkLauncher &right)
{
    return left.label == right.label && left.caption == right.caption && left.icon == right.icon &&
           left.packageName == right.packageName && left.className == right.className &&
           left.packageVersion == right.packageVersion && left.mimeTypes == right.mimeTypes &&
           left.shareMimeTypes == right.shareMimeTypes && left.multi == right.multi &&
           left.extraFlag == right.extraFlag;
}
