#include "daemon/bramdaemon.h"

#include "config/daemonconfig.h"
#include "daemon/appdatausage.h"
#include "daemon/bramdaemonadaptor.h"
#include "daemon/installrequest.h"
#include "daemon/intents.h"
#include "daemon/notices.h"
#include "daemon/packageform.h"
#include "daemon/runtimedirectory.h"
#include "daemon/runtimeoffer.h"
#include "daemon/sharerequest.h"
#include "daemon/windowwait.h"
#include "platform/host/homescreen.h"
#include "platform/host/logging.h"
#include "runtime/servicecontroller.h"
#include "runtime/umbraservicemonitor.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QFileInfo>
#include <QThread>

#include <cstdlib>

BramDaemon::BramDaemon(const DaemonConfig *config, QObject *parent)
    : QObject(parent)
    , m_desktopManager(config)
    , m_serviceController(ServiceController::instance())
    , m_config(config)
    , m_callerCheck(&m_devicePolicy)
    , m_staging(config->path(DaemonConfig::DataRoot),
                config->path(DaemonConfig::StagingIncomingDir))
{
    qDBusRegisterMetaType<AppSizeInfo>();
    qDBusRegisterMetaType<AndroidVersionData>();
    connectSignals();
    prepareStaging();
    registerOnBus();
    new BramDaemonAdaptor(this);
}

BramDaemon::~BramDaemon() = default;

void BramDaemon::connectSignals()
{
    connect(&m_apkManager, &ApkManager::addLauncher, &m_desktopManager,
            &DesktopManager::onCreateLauncher);
    connect(&m_apkManager, &ApkManager::packageRemoved, &m_desktopManager,
            &DesktopManager::onRemovePackage);
    connect(&m_apkManager, &ApkManager::launchersComplete, &m_desktopManager,
            &DesktopManager::onLaunchersComplete);
    connect(m_serviceController, &ServiceController::serviceStateChanged, this,
            &BramDaemon::onServiceStateChanged);
    connect(UmbraServiceMonitor::instance(), &UmbraServiceMonitor::connectionChanged, this,
            &BramDaemon::onUmbraServiceAvailable);
    connect(&m_packageManager, &UmbraPackageManager::connectionChanged, this,
            &BramDaemon::onPackageManagerAvailable);
    connect(&m_activityManager, &UmbraActivityManager::connectionChanged, this,
            &BramDaemon::onActivityManagerAvailable);
    connect(&m_packageManager, &UmbraPackageManager::installationResultReceived, this,
            &BramDaemon::onNotifyInstallationResult);
    connect(&m_packageManager, &UmbraPackageManager::uninstallationResultReceived, this,
            &BramDaemon::onNotifyUninstallationResult);
}

void BramDaemon::prepareStaging()
{
    RuntimeDirectory::make(m_config->path(DaemonConfig::DataRoot),
                           m_config->path(DaemonConfig::StagingPackagedDir));
    m_staging.prepare();
    m_staging.removeLeftovers();
}

void BramDaemon::registerOnBus()
{
    const QString path = QStringLiteral("/com/corvo/bramd");
    const QString service = QStringLiteral("com.corvo.bramd");
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(path, this)) {
        qCCritical(daemonLog) << "Cannot register object at " << path;
        std::exit(EXIT_FAILURE);
    }
    if (!bus.registerService(service)) {
        qCCritical(daemonLog) << "Cannot register D-Bus service at" << service;
        std::exit(EXIT_FAILURE);
    }
}

bool BramDaemon::installFile(const QString &filename, PackageSource source)
{
    qCDebug(daemonLog) << "installFile:" << filename;
    const CallerVerdict caller = m_callerCheck.verdict(*this);
    if (!caller.passes) {
        qCCritical(daemonLog) << "APK installation prohibited";
        publishNotification(qtTrId("bramd-app_installation_disallowed"), true);
        return false;
    }
    if (!isRuntimeInstalled()) {
        qCWarning(daemonLog) << "QRT is not installed, offering installation";
        offerRuntime();
        return false;
    }
    if (!filename.startsWith(QLatin1Char('/'))) {
        qCCritical(daemonLog) << "Absolute path required:" << filename;
        return false;
    }
    if (!QFileInfo::exists(filename)) {
        qCCritical(daemonLog) << "File does not exist:" << filename;
        return false;
    }

    startRuntime();
    if (!isRuntimeReady() && !m_packageRequests.hasRoomFor(filename))
        return false;
    m_staging.prepare();
    const QString staged = m_staging.stage(filename, caller.reads);
    if (staged.isNull())
        return false;
    if (source == PackageSource::PartnerSpace)
        m_partnerSpace.mark(fileName(filename));

    const PackageMod request = installRequest(filename, staged, source, *m_config);
    qCDebug(daemonLog) << "Asking QRT to install:" << request.path;
    if (!isRuntimeReady() || !handOver(request)) {
        qCDebug(daemonLog) << "Umbravm not running. Saving " << request << " for later";
        m_packageRequests.add(request);
    }
    return true;
}

bool BramDaemon::installPreloadFile(const QString &filename)
{
    return installFile(filename, PackageSource::Preload);
}

bool BramDaemon::installPartnerSpaceFile(const QString &filename)
{
    return installFile(filename, PackageSource::PartnerSpace);
}

bool BramDaemon::removeFile(const QString &filename)
{
    qCDebug(daemonLog) << "removeFile:" << filename;
    if (!m_callerCheck.verdict(*this).passes) {
        qCCritical(daemonLog) << "APK uninstallation prohibited";
        publishNotification(qtTrId("bramd-app_uninstallation_disallowed"), true);
        return false;
    }

    startRuntime();
    if (!isRuntimeReady() && !m_packageRequests.hasRoomFor(filename))
        return false;
    const QString entryPackage = m_desktopManager.packageOfDesktopFile(filename);
    const QString package = packageForm(entryPackage.isEmpty() ? filename : entryPackage);
    const PackageMod request{package, false, true};
    if (!isRuntimeReady() || !handOver(request)) {
        qCDebug(daemonLog) << "Umbravm not running. Will remove " << request << " later";
        m_packageRequests.add(request);
    }
    m_partnerSpace.unmark(fileName(filename));
    removeHostPackage(package);
    return true;
}

void BramDaemon::controlService(bool start)
{
    m_serviceController->controlService(start);
}

void BramDaemon::controlServiceAutostart(bool enable)
{
    m_serviceController->controlServiceAutostart(enable);
}

void BramDaemon::triggerPackageMod(const PackageMod &mod)
{
    if (mod.install) {
        qCDebug(daemonLog) << "Installing" << mod;
        m_packageManager.installPackage(mod.path, mod.silent);
    } else {
        qCDebug(daemonLog) << "Uninstalling" << mod;
        m_packageManager.deletePackage(mod.path, mod.silent);
    }
}

quint64 BramDaemon::getAndroidAppDataUsage()
{
    return appDataUsage(m_config->path(DaemonConfig::AppDataDir));
}

bool BramDaemon::getAppStartOnBootup(const QString &packageName)
{
    return m_deviceIdle.isPowerSaveWhitelisted(packageName);
}

void BramDaemon::setAppStartOnBootup(const QString &packageName, bool autoStartAllowed)
{
    const bool before = getAppStartOnBootup(packageName);
    m_deviceIdle.setPowerSaveWhitelist(packageName, autoStartAllowed);
    const bool after = getAppStartOnBootup(packageName);
    if (after != before)
        Q_EMIT appStartOnBootupChanged(packageName, after);
}

AppSizeInfo BramDaemon::getAppSize(const QString &packageName)
{
    const PackageStats stats =
        m_storageStatsManager.queryStatsForPackage(packageName, QString(), 0);
    // The figures are the runtime's; unsigned, so that absurd ones wrap round instead of
    // overflowing.
    const quint64 data = static_cast<quint64>(stats.data) - static_cast<quint64>(stats.cache);
    return {stats.code, static_cast<qint64>(data), stats.cache};
}

void BramDaemon::deleteAppCacheFiles(const QString &packageName)
{
    m_packageManager.deleteApplicationCacheFiles(packageName);
}

void BramDaemon::clearAppUserData(const QString &packageName)
{
    m_packageManager.clearApplicationUserData(packageName);
}

void BramDaemon::forceStopApp(const QString &packageName)
{
    m_activityManager.forceStopPackage(packageName);
}

void BramDaemon::launchIntent(const QString &action, const QString &data, const QString &type,
                              const QString &packageName, const QString &className,
                              const QString &category, const QVariantMap &extras)
{
    startRuntime();
    qCDebug(daemonLog) << "Launching intent" << action << data << type << packageName << className;
    queueIntent(Intents::launch(action, data, type, packageName, className, category, extras));
}

void BramDaemon::launchApp(const QString &packageName)
{
    startRuntime();
    if (UmbraServiceMonitor::instance()->isConnected()) {
        qCDebug(daemonLog) << "Launching" << packageName;
        if (launch(packageName))
            return;
    }
    qCDebug(daemonLog) << "Starting Umbra to launch" << packageName;
    if (m_launches.add(packageName))
        publishRuntimeStarting(packageName);
}

void BramDaemon::share(const QVariantMap &shareActionConfiguration)
{
    startRuntime();
    const auto intent = ShareRequest::fromConfiguration(shareActionConfiguration).toIntent();
    if (intent)
        queueIntent(*intent);
}

void BramDaemon::openAppSettings(const QString &packageName)
{
    startRuntime();
    qCDebug(daemonLog) << "Opening app settings for" << packageName;
    queueIntent(Intents::appSettings(packageName));
}

void BramDaemon::viewLicenses()
{
    startRuntime();
    qCDebug(daemonLog) << "Opening legal information settings page";
    queueIntent(Intents::licenses());
}

void BramDaemon::notifyRuntimeUpgrade(bool upgrading)
{
    qCDebug(daemonLog) << "notifyRuntimeUpgrade:" << upgrading;
    const auto notify = upgrading ? HomeScreen::updatingStarted : HomeScreen::updatingFinished;
    const QStringList desktopFiles = m_desktopManager.installedEntries();
    for (const QString &desktopFile : desktopFiles)
        notify(m_sessionBus, desktopFile);
}

AndroidVersionData BramDaemon::getAndroidVersionData()
{
    return {DaemonConfig::androidSdkVersion(), DaemonConfig::androidRelease(),
            DaemonConfig::androidSecurityPatch()};
}

void BramDaemon::publishNotification(const QString &text, bool isWarning)
{
    Notices::text(text, isWarning).publish(m_sessionBus);
}

void BramDaemon::onNotifyInstallationResult(bool success, const QString &package,
                                            const QString &msg)
{
    QString summary = success ? qtTrId("bramd-install-success") : qtTrId("bramd-install-failed");
    if (!package.isEmpty())
        summary += QStringLiteral(": ") + m_desktopManager.applicationName(package);
    Notices::result(summary, msg).publish(m_sessionBus);
}

void BramDaemon::onNotifyUninstallationResult(bool success, const QString &package)
{
    QString summary =
        success ? qtTrId("bramd-uninstall-success") : qtTrId("bramd-uninstall-failed");
    if (!package.isEmpty())
        summary += QStringLiteral(": ") + package;
    Notices::result(summary).publish(m_sessionBus);
}

void BramDaemon::onUmbraServiceAvailable(bool connected)
{
    if (connected && isRuntimeReady())
        releaseRequests();
}

void BramDaemon::onPackageManagerAvailable(bool connected)
{
    if (connected && isRuntimeReady())
        releaseRequests();
}

void BramDaemon::onServiceStateChanged()
{
    // Not already at its end: what was on its way when the runtime died is served after that was
    // told, and a completion among it would find nothing announced and take the entries of all
    // apps.
    const QString state = m_serviceController->serviceState();
    const bool hadEnded = m_runtimeEnded;
    m_runtimeEnded = state == QLatin1String("inactive") || state == QLatin1String("failed");
    if (state == QLatin1String("activating") || (hadEnded && !m_runtimeEnded))
        m_desktopManager.onRuntimeStarting();
}

void BramDaemon::onActivityManagerAvailable(bool connected)
{
    if (connected)
        startIntents();
}

void BramDaemon::startRuntime()
{
    const QString state = m_serviceController->serviceState();
    if (state == QLatin1String("inactive") || state == QLatin1String("deactivating"))
        m_serviceController->controlService(true);
}

bool BramDaemon::isRuntimeReady() const
{
    return m_packageManager.isConnected() && UmbraServiceMonitor::instance()->isConnected();
}

// Which of the two connections comes up last is for the runtime to decide: whoever finds both up
// gets here, so that nothing that was accepted is stranded.
void BramDaemon::releaseRequests()
{
    while (!m_launches.isEmpty()) {
        const QString packageName = m_launches.takeFirst();
        qCDebug(daemonLog) << "Launching " << packageName << " (" << m_launches.size()
                           << " more in queue)";
        if (!launch(packageName)) {
            m_launches.putBack(packageName);
            return;
        }
    }
    m_packageRequests.release([this](const PackageMod &request) { return handOver(request); });
}

bool BramDaemon::handOver(const PackageMod &request)
{
    triggerPackageMod(request);
    if (isRuntimeReady())
        return true;
    qCDebug(daemonLog) << "The runtime is gone, keeping" << request;
    return false;
}

bool BramDaemon::launch(const QString &packageName)
{
    UmbraServiceMonitor::instance()->launchPackage(packageName);
    if (UmbraServiceMonitor::instance()->isConnected())
        return true;
    qCDebug(daemonLog) << "The runtime is gone, keeping" << packageName;
    return false;
}

void BramDaemon::queueIntent(const Intent &intent)
{
    if (!m_intents.add(intent))
        return;
    if (m_activityManager.isConnected())
        startIntents();
    if (!m_intents.isEmpty()) // nobody was there, or nobody any more
        publishRuntimeStarting(intent.package);
}

void BramDaemon::startIntents()
{
    m_intents.workThrough([this](const Intent &intent) {
        qCDebug(daemonLog) << "Launching " << intent.action << intent.package;
        m_activityManager.startActivity(intent);
        if (!m_activityManager.isConnected()) {
            qCDebug(daemonLog) << "The runtime is gone, keeping" << intent.action << intent.package;
            return false;
        }
        if (!intent.package.isEmpty())
            waitForWindow(intent.package, QThread::msleep);
        return true;
    });
}

void BramDaemon::publishRuntimeStarting(const QString &packageName)
{
    // Not arg(), which complains about the bare id that is shown when there is no catalogue.
    QString text = qtTrId("bramd-launch_umbra_to_start_android_app");
    text.replace(QLatin1String("%1"), m_desktopManager.applicationName(packageName));
    publishNotification(text, false);
}

void BramDaemon::removeHostPackage(const QString &package)
{
    const QString packagedApk =
        m_config->path(DaemonConfig::StagingPackagedDir) + package + QStringLiteral(".apk");
    if (QFileInfo::exists(packagedApk))
        m_packageRemover.remove(QStringLiteral("lagoon-apk-%1").arg(package));
}
