#include "runtime/umbraactivitymanager.h"

#include "binder/intentcodec.h"
#include "binder/umbrabindercall.h"
#include "runtime/transactioncodes.h"

namespace {

constexpr char ServiceName[] = "activity";
constexpr char InterfaceDescriptor[] = "android.app.IActivityManager";

constexpr TransactionCodes StartActivity{3, 6, 7, 7};
constexpr TransactionCodes ForceStopPackage{72, 77, 68, 68};

constexpr int Owner = 0; // the runtime's only Android user

// The activity manager looks these two up by name; a null name is an error to it.
QString nobody()
{
    return QLatin1String("");
}

} // namespace

UmbraActivityManager::UmbraActivityManager(QObject *parent)
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, true, parent)
{
}

void UmbraActivityManager::startActivity(const Intent &intent)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    BinderParcel &fields = call.fields();
    fields.writeLocalObject(nullptr); // caller's application thread
    fields.writeString(nobody());     // calling package
    fields.writeInt32(1);             // an intent follows
    writeIntent(fields, intent);
    fields.writeString(intent.type);  // resolved type
    fields.writeLocalObject(nullptr); // result receiver
    fields.writeString(nobody());     // result identifier
    fields.writeInt32(0);             // request code
    fields.writeInt32(0);             // start flags
    fields.writeInt32(0);             // no profiler information
    fields.writeInt32(0);             // no options
    call.send(StartActivity.forRuntime());
}

void UmbraActivityManager::forceStopPackage(const QString &packageName)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    BinderParcel &fields = call.fields();
    fields.writeString(packageName);
    fields.writeInt32(Owner);
    call.send(ForceStopPackage.forRuntime());
}
