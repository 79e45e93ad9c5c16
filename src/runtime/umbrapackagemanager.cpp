#include "runtime/umbrapackagemanager.h"

#include "binder/logging.h"
#include "binder/umbrabindercall.h"
#include "config/daemonconfig.h"
#include "platform/binder/servicemanager.h"
#include "runtime/installresult.h"
#include "runtime/transactioncodes.h"
#include "runtime/umbraservicemonitor.h"

#include <QtGlobal>

namespace {

constexpr char ServiceName[] = "package";
constexpr char InterfaceDescriptor[] = "android.content.pm.IPackageManager";
constexpr char InstallObserverDescriptor[] = "android.content.pm.IPackageInstallObserver2";
constexpr char DeleteObserverDescriptor[] = "android.content.pm.IPackageDeleteObserver";

// Android removed this call in SDK 28.
constexpr int LastSdkWithInstallPackage = 27;
constexpr quint32 InstallPackage = 60;

constexpr TransactionCodes DeletePackage{64, 63, 66, 66};
constexpr TransactionCodes DeleteCacheFiles{100, 100, 103, 103};
constexpr TransactionCodes ClearUserData{101, 101, 104, 104};
constexpr quint32 GetPackageUid = 5;

// Calls of the observers (AOSP frameworks/base, core/java/android/content/pm/*Observer*.aidl).
constexpr quint32 OnUserActionRequired = 1;
constexpr quint32 OnPackageInstalled = 2;
constexpr quint32 PackageDeleted = 1;

// AOSP frameworks/base, core/java/android/content/pm/PackageManager.java
constexpr int InstallFlags = 0x42; // INSTALL_ALL_USERS | INSTALL_REPLACE_EXISTING
constexpr int DeleteFlags = 0x2;   // DELETE_ALL_USERS
constexpr int AnyVersion = -1;     // VERSION_CODE_HIGHEST

constexpr int Owner = 0; // the runtime's only Android user

void logUnknownCall(quint32 code)
{
    qCWarning(binderLog) << "Unknown binder call (" << code << ")";
}

} // namespace

UmbraPackageManager::UmbraPackageManager(QObject *parent)
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, true, parent)
{
    connect(this, &UmbraBinderConnection::connectionChanged, this,
            &UmbraPackageManager::onConnected);
    // A runtime that was up already has been connected to before anyone could listen.
    if (isConnected())
        onConnected(true);
}

UmbraPackageManager::~UmbraPackageManager()
{
    disconnect(this, &UmbraBinderConnection::connectionChanged, this, nullptr);
}

void UmbraPackageManager::installPackage(const QString &path, bool noObserver)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    const std::shared_ptr<Binder::LocalObject> observer = noObserver ? nullptr : m_installObserver;
    if (DaemonConfig::androidSdkVersion() != LastSdkWithInstallPackage) {
        UmbraServiceMonitor::instance()->installPackage(path, observer.get());
        return;
    }
    BinderParcel &fields = call.fields();
    fields.writeString(path);
    fields.writeLocalObject(observer.get());
    fields.writeInt32(InstallFlags);
    fields.writeString(QString()); // installer package
    fields.writeInt32(Owner);
    call.send(InstallPackage);
}

void UmbraPackageManager::deletePackage(const QString &packageName, bool noObserver)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    BinderParcel &fields = call.fields();
    fields.writeString(packageName);
    fields.writeInt32(AnyVersion);
    fields.writeLocalObject(noObserver ? nullptr : m_deleteObserver.get());
    fields.writeInt32(Owner);
    fields.writeInt32(DeleteFlags);
    call.send(DeletePackage.forRuntime());
}

void UmbraPackageManager::deleteApplicationCacheFiles(const QString &packageName)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    BinderParcel &fields = call.fields();
    fields.writeString(packageName);
    fields.writeInt32(Owner);
    fields.writeLocalObject(nullptr); // observer
    call.send(DeleteCacheFiles.forRuntime());
}

void UmbraPackageManager::clearApplicationUserData(const QString &packageName)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    BinderParcel &fields = call.fields();
    fields.writeString(packageName);
    fields.writeLocalObject(nullptr); // observer
    fields.writeInt32(Owner);
    call.send(ClearUserData.forRuntime());
}

int UmbraPackageManager::getPackageUid(const QString &packageName, int flags)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return -1;
    BinderParcel &fields = call.fields();
    fields.writeString(packageName);
    fields.writeInt32(flags);
    fields.writeInt32(Owner);
    const auto reply = call.send(GetPackageUid);
    if (reply == nullptr)
        return -1;
    BinderParcel answer(*reply);
    return answer.readInt32() == 0 ? answer.readInt32() : -1;
}

void UmbraPackageManager::onConnected(bool connected)
{
    if (!connected) {
        m_installObserver.reset();
        m_deleteObserver.reset();
        m_formerObservers.clear();
        return;
    }
    if (m_installObserver != nullptr)
        m_formerObservers.insert(m_formerObservers.end(), {m_installObserver, m_deleteObserver});
    const Binder::IncomingCall onEvent =
        [this](Binder::IncomingRequest &request, quint32 code, quint32 flags,
               Binder::Status *status) -> std::unique_ptr<Binder::OutgoingReply> {
        Q_UNUSED(flags)
        Q_UNUSED(status)
        handleEvent(request, code);
        return nullptr;
    };
    m_installObserver = serviceManager()->createLocalObject(InstallObserverDescriptor, onEvent);
    m_deleteObserver = serviceManager()->createLocalObject(DeleteObserverDescriptor, onEvent);
}

void UmbraPackageManager::handleEvent(Binder::IncomingRequest &request, quint32 code)
{
    const QByteArray interface = request.interfaceToken();
    if (interface.isNull()) {
        qCDebug(binderLog) << "bramd - installation event - no interface?";
        return;
    }
    if (interface == InstallObserverDescriptor)
        handleInstallEvent(request, code);
    else if (interface == DeleteObserverDescriptor)
        handleDeleteEvent(request, code);
}

void UmbraPackageManager::handleInstallEvent(Binder::IncomingRequest &request, quint32 code)
{
    switch (code) {
    case OnUserActionRequired:
        Q_EMIT installationResultReceived(false, QString(),
                                          QStringLiteral("Package installation failed"));
        break;
    case OnPackageInstalled:
        handleInstallResult(request);
        break;
    default:
        logUnknownCall(code);
        break;
    }
}

void UmbraPackageManager::handleInstallResult(Binder::IncomingRequest &request)
{
    BinderParcel fields(request);
    const QString packageName = fields.readString();
    const int returnCode = fields.readInt32();
    QString msg = fields.readString();
    if (fields.readInt32() != 0)
        fields.readBundle(); // extras
    qCDebug(binderLog) << "Package install result" << returnCode << "for" << packageName << "("
                       << msg << ")";

    const bool success = returnCode == InstallResult::Success;
    if (msg.isEmpty() && !success)
        msg = qtTrId(InstallResult::failureTextId(returnCode));
    Q_EMIT installationResultReceived(success, packageName, msg);
}

void UmbraPackageManager::handleDeleteEvent(Binder::IncomingRequest &request, quint32 code)
{
    if (code != PackageDeleted) {
        logUnknownCall(code);
        return;
    }
    BinderParcel fields(request);
    const QString packageName = fields.readString();
    const int returnCode = fields.readInt32();
    Q_EMIT uninstallationResultReceived(returnCode == InstallResult::DeleteSuccess, packageName);
}
