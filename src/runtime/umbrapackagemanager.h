#pragma once

#include "binder/umbrabinderconnection.h"
#include "platform/binder/localobject.h"

#include <QString>

#include <memory>
#include <vector>

/// The daemon's client of the Android package manager service "package".
///
/// Every operation blocks until the runtime answers, and does nothing without a connection. What
/// comes of an installation or removal arrives later through the observers, as a signal, unless
/// the call was made with `noObserver`.
class UmbraPackageManager : public UmbraBinderConnection
{
    Q_OBJECT

public:
    explicit UmbraPackageManager(QObject *parent = nullptr);
    ~UmbraPackageManager() override;

    /// Installs an APK file; `path` is the one under which the runtime sees it.
    void installPackage(const QString &path, bool noObserver);

    /// Uninstalls a package, in whatever version it is installed.
    void deletePackage(const QString &packageName, bool noObserver);

    void deleteApplicationCacheFiles(const QString &packageName);
    void clearApplicationUserData(const QString &packageName);

    /// The Linux user id of an installed package, as the runtime counts; −1 when there is none.
    int getPackageUid(const QString &packageName, int flags);

Q_SIGNALS:
    /// `msg` is for the user: the runtime's own words or a translated text; it may be empty.
    void installationResultReceived(bool success, const QString &packageName, const QString &msg);
    void uninstallationResultReceived(bool success, const QString &packageName);

private:
    void onConnected(bool connected);
    void handleEvent(Binder::IncomingRequest &request, quint32 code);
    void handleInstallEvent(Binder::IncomingRequest &request, quint32 code);
    void handleDeleteEvent(Binder::IncomingRequest &request, quint32 code);
    void handleInstallResult(Binder::IncomingRequest &request);

    std::shared_ptr<Binder::LocalObject> m_installObserver;
    std::shared_ptr<Binder::LocalObject> m_deleteObserver;
    // A connection that is made anew without an end between has new observers, but the results of
    // calls made before still come to the old ones.
    std::vector<std::shared_ptr<Binder::LocalObject>> m_formerObservers;
};
