#include "platform/timed/settingsrelay.h"

#include "platform/timed/names.h"

#include <QDBusConnection>

namespace Fjord {
namespace Timed {

SettingsRelay::SettingsRelay(QObject *receiver)
    : QObject(receiver)
{
}

bool SettingsRelay::listen()
{
    return QDBusConnection::systemBus().connect(
        serviceName(), objectPath(), propertiesInterface(), QStringLiteral("PropertiesChanged"),
        this, SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
}

void SettingsRelay::onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                        const QStringList &invalidated)
{
    Q_UNUSED(invalidated)
    const auto zone = changed.constFind(timezoneProperty());
    if (interface == interfaceName() && zone != changed.constEnd() &&
        zone->type() == QVariant::String)
        Q_EMIT settingsChanged(WallClock::Info(zone->toString()), false);
}

} // namespace Timed
} // namespace Fjord
