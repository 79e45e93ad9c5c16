#pragma once

#include "binder/umbrabinderconnection.h"
#include "platform/binder/localobject.h"

#include <QString>

#include <memory>

/// The daemon's client of the runtime's own application service "umbra", which the runtime image
/// provides beside the Android services: it launches apps by package name, installs APK files
/// where the Android release lacks the package manager's call for it, and reports closed apps.
///
/// All calls block until the runtime answers; without a connection nothing is sent.
class UmbraServiceMonitor : public UmbraBinderConnection
{
    Q_OBJECT

public:
    /// The one client of the process, made on the first call and never destroyed.
    static UmbraServiceMonitor *instance();

    /// Starts the package's main activity.
    void launchPackage(const QString &packageName);

    /// Hands an APK file, by its path as the runtime sees it, to the runtime's installer.
    /// `observer` (may be null) is later called with the result. False when the runtime refuses
    /// or there is no connection.
    bool installPackage(const QString &path, const Binder::LocalObject *observer);

private:
    UmbraServiceMonitor();

    void registerListener();

    std::unique_ptr<Binder::LocalObject> m_listener;
};
