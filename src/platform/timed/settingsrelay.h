#pragma once

#include "platform/timed/wallclock.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace Fjord {
namespace Timed {

/// Turns the time daemon's property changes into the settings-changed notification. A child of the
/// receiver, so that it outlives the proxy through which it was asked for.
class SettingsRelay : public QObject
{
    Q_OBJECT

public:
    explicit SettingsRelay(QObject *receiver);

    /// Listens to the daemon on the system bus. False when the bus is not there.
    bool listen();

Q_SIGNALS:
    void settingsChanged(const Fjord::Timed::WallClock::Info &info, bool timeChanged);

private Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                             const QStringList &invalidated);
};

} // namespace Timed
} // namespace Fjord
