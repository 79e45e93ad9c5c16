#pragma once

#include "daemon/callercheck.h"
#include "daemon/intentqueue.h"
#include "daemon/packagemod.h"
#include "daemon/packagerequests.h"
#include "daemon/packagestaging.h"
#include "daemon/partnerspace.h"
#include "daemon/waitinglist.h"
#include "interface/androidversiondata.h"
#include "interface/appsizeinfo.h"
#include "launcher/apkmanager.h"
#include "launcher/desktopmanager.h"
#include "platform/host/accountsdevicepolicy.h"
#include "platform/host/packageremover.h"
#include "platform/host/sessionbus.h"
#include "runtime/umbraactivitymanager.h"
#include "runtime/umbradeviceidle.h"
#include "runtime/umbrapackagemanager.h"
#include "runtime/umbrastoragestatsmanager.h"
#include "runtime/umbratimezonemonitor.h"

#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

class DaemonConfig;
class ServiceController;

/// The daemon's one service object: owns the clients of the Android runtime and the host, connects
/// them, and carries out the operations of "com.corvo.bramd" on the system bus, which
/// BramDaemonAdaptor forwards to the slots of the same names.
class BramDaemon : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    /// `config` is not owned and must outlive the object. Registers the object and the service on
    /// the system bus, and ends the process with status 1 when that fails.
    explicit BramDaemon(const DaemonConfig *config, QObject *parent = nullptr);
    ~BramDaemon() override;

Q_SIGNALS:
    // Part of the published interface, and never emitted.
    void installPackage(const QString &filename);
    void uninstallPackage(const QString &filename);
    void installPackageFromRPM(const QString &filename);
    void uninstallPackageFromRPM(const QString &filename);

    void appStartOnBootupChanged(const QString &packageName, bool autoStartAllowed);

public Q_SLOTS:
    /// Stages the APK file at an absolute path and has the runtime install it, now or when it is
    /// ready. True when the request was accepted; what comes of it is told by a notice.
    bool installFile(const QString &filename, PackageSource source = PackageSource::File);
    bool installPreloadFile(const QString &filename);
    bool installPartnerSpaceFile(const QString &filename);

    /// Has the runtime uninstall the app of a desktop entry, an APK file name or a package name,
    /// and the host's package system remove the package that brought it. True when the request
    /// was accepted.
    bool removeFile(const QString &filename);

    void controlService(bool start);
    void controlServiceAutostart(bool enable);

    /// Hands a request to the runtime's package manager, which must be connected.
    void triggerPackageMod(const PackageMod &mod);

    quint64 getAndroidAppDataUsage();
    bool getAppStartOnBootup(const QString &packageName);
    void setAppStartOnBootup(const QString &packageName, bool autoStartAllowed);
    AppSizeInfo getAppSize(const QString &packageName);
    void deleteAppCacheFiles(const QString &packageName);
    void clearAppUserData(const QString &packageName);
    void forceStopApp(const QString &packageName);
    void launchIntent(const QString &action, const QString &data, const QString &type,
                      const QString &packageName, const QString &className, const QString &category,
                      const QVariantMap &extras = QVariantMap());
    void launchApp(const QString &packageName);
    void share(const QVariantMap &shareActionConfiguration);
    void openAppSettings(const QString &packageName);
    void viewLicenses();
    void notifyRuntimeUpgrade(bool upgrading);
    AndroidVersionData getAndroidVersionData();

    /// Shows a text to the user; a warning is urgent.
    void publishNotification(const QString &text, bool isWarning);
    void onNotifyInstallationResult(bool success, const QString &package, const QString &msg);
    void onNotifyUninstallationResult(bool success, const QString &package);

    void onUmbraServiceAvailable(bool connected);
    void onPackageManagerAvailable(bool connected);
    void onActivityManagerAvailable(bool connected);

private:
    void onServiceStateChanged();
    void connectSignals();
    void prepareStaging();
    void registerOnBus();
    void startRuntime();
    bool isRuntimeReady() const;
    void releaseRequests();

    /// False when the runtime turns out to be gone and has not been told of it.
    bool handOver(const PackageMod &request);
    bool launch(const QString &packageName);

    void queueIntent(const Intent &intent);
    void startIntents();
    void publishRuntimeStarting(const QString &packageName);
    void removeHostPackage(const QString &package);

    ApkManager m_apkManager;
    UmbraPackageManager m_packageManager;
    UmbraActivityManager m_activityManager;
    UmbraStorageStatsManager m_storageStatsManager;
    UmbraTimezoneMonitor m_timezoneMonitor;
    UmbraDeviceIdle m_deviceIdle;
    DesktopManager m_desktopManager;
    ServiceController *m_serviceController;
    bool m_runtimeEnded = false; // and the next one has not begun
    const DaemonConfig *m_config;
    PackageRequests m_packageRequests;
    WaitingList<QString> m_launches; // packages to launch once the runtime is ready
    IntentQueue m_intents;

    AccountsDevicePolicy m_devicePolicy;
    CallerCheck m_callerCheck;
    PackageStaging m_staging;
    PartnerSpace m_partnerSpace;
    PackageRemover m_packageRemover;
    SessionBus m_sessionBus;
};
