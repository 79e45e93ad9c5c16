#include "runtime/umbratimezonemonitor.h"

#include "binder/logging.h"
#include "platform/binder/client.h"
#include "platform/timed/interface.h"

namespace {

constexpr char ServiceName[] = "alarm";
constexpr char InterfaceDescriptor[] = "android.app.IAlarmManager";

constexpr quint32 SetTimeZone = 3; // the same in every release

} // namespace

UmbraTimezoneMonitor::UmbraTimezoneMonitor(QObject *parent)
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, true, parent)
{
    qRegisterMetaType<Fjord::Timed::WallClock::Info>("Fjord::Timed::WallClock::Info");
    {
        Fjord::Timed::Interface timed;
        timed.settings_changed_connect(this,
                                       SLOT(settingsChanged(Fjord::Timed::WallClock::Info, bool)));
        const auto reply = timed.get_wall_clock_info();
        const auto info = reply.isValid() ? reply.value() : Fjord::Timed::WallClock::Info();
        m_timezone = info.humanReadableTz();
    }
    connect(this, &UmbraBinderConnection::connectionChanged, this,
            &UmbraTimezoneMonitor::onServiceConnectionChanged);
}

UmbraTimezoneMonitor::~UmbraTimezoneMonitor()
{
    // The connection's own destructor still tells of its end, which this object must not hear.
    disconnect(this, &UmbraBinderConnection::connectionChanged, this, nullptr);
}

void UmbraTimezoneMonitor::settingsChanged(const Fjord::Timed::WallClock::Info &newInfo,
                                           bool time_changed)
{
    Q_UNUSED(time_changed)
    const QString zone = newInfo.humanReadableTz();
    if (zone == m_timezone)
        return;
    setTimeZone(zone.toLatin1());
    m_timezone = zone;
}

void UmbraTimezoneMonitor::onServiceConnectionChanged(bool connected)
{
    if (connected)
        setTimeZone(m_timezone.toLatin1());
}

void UmbraTimezoneMonitor::setTimeZone(const QByteArray &zone)
{
    const std::shared_ptr<Binder::Client> remote = client();
    if (remote == nullptr)
        return;
    const auto request = remote->createRequest();
    request->writer().appendString16(zone.constData());
    Binder::Status status = Binder::StatusOk;
    const auto reply = remote->transact(SetTimeZone, *request, &status);
    if (reply == nullptr || status != Binder::StatusOk)
        qCWarning(binderLog) << "Failed to set umbra timezone:" << status;
}
