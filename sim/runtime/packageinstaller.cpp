#include "runtime/packageinstaller.h"

#include "runtime/parcelwriter.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcInstaller, "sim.runtime.installer")

namespace SimRuntime {

namespace {

constexpr quint32 OnPackageInstalled = 2; // IPackageInstallObserver2
constexpr quint32 PackageDeleted = 1;     // IPackageDeleteObserver

} // namespace

PackageInstaller::PackageInstaller(PackageStore *store, Callbacks *callbacks, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_callbacks(callbacks)
{
}

void PackageInstaller::install(const QString &path, int flags,
                               std::shared_ptr<RemoteObject> observer)
{
    const auto work = [this, path, flags, observer = std::move(observer)] {
        QString package;
        const InstallResult result = m_store->install(path, flags, &package);
        qCInfo(lcInstaller) << "Install of" << path << "ended with" << int(result) << package;
        ParcelWriter request = m_callbacks->request(CallbackKind::InstallObserver);
        request.string16(package);
        request.int32(result);
        request.string16(QString()); // the message is for developers; Android has none for most
        request.int32(0);            // no extras
        m_callbacks->call(observer, OnPackageInstalled, request);
        if (result == InstallSucceeded)
            Q_EMIT installed(package);
    };
    QMetaObject::invokeMethod(this, work, Qt::QueuedConnection);
}

void PackageInstaller::remove(const QString &package, int flags,
                              std::shared_ptr<RemoteObject> observer)
{
    const auto work = [this, package, flags, observer = std::move(observer)] {
        const bool known = m_store->contains(package);
        const int result = m_store->remove(package, flags);
        qCInfo(lcInstaller) << "Removal of" << package << "ended with" << result;
        ParcelWriter request = m_callbacks->request(CallbackKind::DeleteObserver);
        request.string16(package);
        request.int32(result);
        m_callbacks->call(observer, PackageDeleted, request);
        if (known)
            Q_EMIT removed(package);
    };
    QMetaObject::invokeMethod(this, work, Qt::QueuedConnection);
}

} // namespace SimRuntime
