#include "runtime/umbraservicemonitor.h"

#include "binder/umbrabindercall.h"
#include "platform/binder/servicemanager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDebug>

namespace {

constexpr char ServiceName[] = "umbra";
constexpr char InterfaceDescriptor[] = "umbra.applications.IUmbraService";
constexpr char ListenerDescriptor[] = "umbra.applications.IUmbraServiceListener";

// Calls of the runtime's service, the same in every release of the runtime image.
constexpr quint32 LaunchPackage = 1;
constexpr quint32 InstallPackage = 2;
constexpr quint32 SetListener = 15;

// Calls of our listener.
constexpr quint32 AppClosed = 1;

void emitAppClosed(const QString &appName)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(QStringLiteral("/com/corvo/bramd"),
                                   QStringLiteral("com.corvo.bramd"), QStringLiteral("appClosed"));
    // An app without a name is an empty string on the bus, where there is no null string.
    signal << (appName.isNull() ? QString(QLatin1String("")) : appName);
    QDBusConnection::systemBus().send(signal);
}

// Nobody waits for an answer to a report, so none is made.
// cppcheck-suppress constParameter // a parcel is read by moving on in it
std::unique_ptr<Binder::OutgoingReply> handleReport(Binder::IncomingRequest &request, quint32 code)
{
    if (request.interfaceToken() == ListenerDescriptor && code == AppClosed)
        emitAppClosed(BinderParcel(request).readString());
    return nullptr;
}

} // namespace

UmbraServiceMonitor *UmbraServiceMonitor::instance()
{
    static UmbraServiceMonitor *monitor = new UmbraServiceMonitor;
    return monitor;
}

UmbraServiceMonitor::UmbraServiceMonitor()
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, true)
{
    connect(this, &UmbraBinderConnection::connectionChanged, this,
            &UmbraServiceMonitor::registerListener);
    // A runtime that was up already has been connected to before anyone could listen.
    if (isConnected())
        registerListener();
}

void UmbraServiceMonitor::launchPackage(const QString &packageName)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    call.fields().writeString(packageName);
    call.send(LaunchPackage);
}

bool UmbraServiceMonitor::installPackage(const QString &path, const Binder::LocalObject *observer)
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return false;
    BinderParcel &fields = call.fields();
    fields.writeString(path);
    fields.writeLocalObject(observer);
    const auto reply = call.send(InstallPackage);
    qint32 accepted = 0;
    return reply != nullptr && reply->readInt32(&accepted) && accepted != 0;
}

void UmbraServiceMonitor::registerListener()
{
    UmbraBinderCall call(*this);
    if (!call.isPossible())
        return;
    m_listener.reset();
    m_listener = serviceManager()->createLocalObject(
        ListenerDescriptor,
        [](Binder::IncomingRequest &request, quint32 code, quint32 flags, Binder::Status *status) {
            Q_UNUSED(flags)
            Q_UNUSED(status)
            return handleReport(request, code);
        });
    if (m_listener == nullptr) {
        qCritical() << "Failed to create local listener object";
        return;
    }
    call.fields().writeLocalObject(m_listener.get());
    Binder::Status status = Binder::StatusOk;
    call.send(SetListener, &status);
    if (status != Binder::StatusOk)
        qCritical() << "Failed to set listener for umbra service";
}
