#include "runtime/umbradeviceidle.h"

#include "binder/logging.h"
#include "binder/umbrabindercall.h"
#include "runtime/transactioncodes.h"

namespace {

constexpr char ServiceName[] = "deviceidle";
constexpr char InterfaceDescriptor[] = "android.os.IDeviceIdleController";

// The first two methods of the interface in every release; the query moved with its neighbours.
constexpr quint32 AddPowerSaveWhitelistApp = 1;
constexpr quint32 RemovePowerSaveWhitelistApp = 2;
constexpr TransactionCodes IsPowerSaveWhitelistApp{13, 16, 16, 16};

constexpr int NoException = 0;
constexpr int True = 1;

} // namespace

UmbraDeviceIdle::UmbraDeviceIdle(QObject *parent)
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, false, parent)
{
}

void UmbraDeviceIdle::setPowerSaveWhitelist(const QString &packageName, bool whitelisted)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    call.fields().writeString(packageName);
    Binder::Status status = Binder::StatusOk;
    call.send(whitelisted ? AddPowerSaveWhitelistApp : RemovePowerSaveWhitelistApp, &status);
    if (status != Binder::StatusOk)
        qCCritical(binderLog) << "PowerSaveWhitelist setting for" << packageName << "failed";
}

bool UmbraDeviceIdle::isPowerSaveWhitelisted(const QString &packageName)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return false;
    call.fields().writeString(packageName);
    Binder::Status status = Binder::StatusOk;
    const auto reply = call.send(IsPowerSaveWhitelistApp.forRuntime(), &status);
    if (status == Binder::StatusOk && reply != nullptr) {
        BinderParcel answer(*reply);
        if (answer.readInt32() == NoException)
            return answer.readInt32() == True;
    }
    qCCritical(binderLog) << "PowerSaveWhitelist check for" << packageName << "failed";
    return false;
}
