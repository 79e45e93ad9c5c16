#include "platform/timed/interface.h"

#include "platform/timed/names.h"
#include "platform/timed/settingsrelay.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>

namespace Fjord {
namespace Timed {

Interface::Interface(QObject *parent)
    : QObject(parent)
{
}

QDBusReply<WallClock::Info> Interface::get_wall_clock_info()
{
    QDBusMessage get = QDBusMessage::createMethodCall(serviceName(), objectPath(),
                                                      propertiesInterface(), QStringLiteral("Get"));
    get << interfaceName() << timezoneProperty();
    const QDBusMessage answer = QDBusConnection::systemBus().call(get);
    const QDBusReply<QDBusVariant> zone = answer;
    if (!zone.isValid())
        return zone.error();
    const QVariant value = zone.value().variant();
    if (value.type() != QVariant::String)
        return QDBusError(QDBusError::InvalidSignature, QStringLiteral("The zone is no string"));
    return get.createReply(QVariant::fromValue(WallClock::Info(value.toString())));
}

bool Interface::settings_changed_connect(QObject *receiver, const char *slot)
{
    auto *relay = new SettingsRelay(receiver);
    return connect(relay, SIGNAL(settingsChanged(Fjord::Timed::WallClock::Info, bool)), receiver,
                   slot) &&
           relay->listen();
}

} // namespace Timed
} // namespace Fjord
