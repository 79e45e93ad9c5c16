#include "launcher/apkmanager.h"

#include "binder/binderparcel.h"
#include "binder/device.h"
#include "launcher/logging.h"

namespace {

enum TransactionCode : quint32 {
    LauncherAdded = 1,
    LaunchersComplete = 2,
    PackageRemoved = 3,
    HandlerAdded = 4,
};

} // namespace

ApkManager::ApkManager(QObject *parent)
    : UmbraBinderService("umbra.launcher", "umbra.applications.IUmbraNativeLauncherService",
                         UmbraBinder::Device, parent)
{
}

bool ApkManager::processRequest(quint32 code, BinderParcel *request, BinderParcel *reply)
{
    Q_UNUSED(reply)
    switch (code) {
    case LauncherAdded:
        onLauncherAdded(request);
        return true;
    case LaunchersComplete:
        Q_EMIT launchersComplete();
        return true;
    case PackageRemoved:
        onPackageRemoved(request);
        return true;
    case HandlerAdded:
        onHandlerAdded(request);
        return true;
    }
    qCDebug(launcherLog) << "Unknown binder call (" << code << ")";
    return false;
}

void ApkManager::onLauncherAdded(BinderParcel *request)
{
    const QString packageName = request->readString();
    const QString className = request->readString();
    const QString label = request->readString();
    const QString packageVersion = request->readString();
    const QByteArray icon = request->readByteArray();

    qCDebug(launcherLog) << "Read" << icon.size() << "bytes for" << packageName << "icon";
    qCDebug(launcherLog) << "Launcher added from umbra:" << label << "(" << packageName << ")";

    const QString none;
    Q_EMIT addLauncher(ApkLauncher(label, none, icon, packageName, className, packageVersion, none,
                                   none, none, none, false, false));
}

void ApkManager::onPackageRemoved(BinderParcel *request)
{
    const QString packageName = request->readString();

    qCDebug(launcherLog) << "Package removed from umbra:" << packageName;

    Q_EMIT packageRemoved(packageName);
}

void ApkManager::onHandlerAdded(BinderParcel *request)
{
    const QString packageName = request->readString();
    const QString className = request->readString();
    const QString label = request->readString();
    const QString caption = request->readString();
    const QString packageVersion = request->readString();
    const QString mimeTypes = request->readString();
    const QString shareMimeTypes = request->readString();
    const bool multi = request->readBool();
    const QString urlSchemes = request->readString();
    const QString urlHandlers = request->readString();
    const bool extraFlag = request->readBool();
    const QByteArray icon = request->readByteArray();

    qCDebug(launcherLog) << "Read" << icon.size() << "bytes for" << packageName << "icon";
    qCDebug(launcherLog) << "Handler added from umbra:" << label << caption << "(" << packageName
                         << ")" << mimeTypes << shareMimeTypes << urlSchemes << urlHandlers;

    Q_EMIT addLauncher(ApkLauncher(label, caption, icon, packageName, className, packageVersion,
                                   mimeTypes, urlSchemes, urlHandlers, shareMimeTypes, extraFlag,
                                   multi));
}
