#pragma once

#include "binder/umbrabinderservice.h"
#include "launcher/apklauncher.h"

/// The daemon's binder service "umbra.launcher", which the runtime calls to tell which activities
/// its apps have for the host: every launcher and handler, then that the list is complete, and at
/// any time that a package is gone. Decodes the calls and passes them on as signals; the records
/// in them are unchecked.
class ApkManager : public UmbraBinderService
{
    Q_OBJECT

public:
    explicit ApkManager(QObject *parent = nullptr);

    bool processRequest(quint32 code, BinderParcel *request, BinderParcel *reply) override;

Q_SIGNALS:
    void addLauncher(const ApkLauncher &launcher);
    void packageRemoved(const QString &package);
    void launchersComplete();

private:
    void onLauncherAdded(BinderParcel *request);
    void onPackageRemoved(BinderParcel *request);
    void onHandlerAdded(BinderParcel *request);
};
