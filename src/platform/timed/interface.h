#pragma once

#include "platform/timed/wallclock.h"

#include <QDBusReply>
#include <QObject>

namespace Fjord {
namespace Timed {

/// The host's time daemon on the system bus, by the names of the platform's client library.
///
/// This implementation serves hosts whose time daemon is systemd's: "org.freedesktop.timedate1"
/// (org.freedesktop.timedate1(5)), whose property `Timezone` is the zone's Olson name. That
/// daemon ends when idle and is started again by the next call.
class Interface : public QObject
{
    Q_OBJECT

public:
    explicit Interface(QObject *parent = nullptr);

    /// Blocks until the daemon answers, for at most the bus's usual time-out. The reply is invalid
    /// when there is no daemon or it does not tell the zone.
    QDBusReply<WallClock::Info> get_wall_clock_info();

    /// Calls `slot` of `receiver`, written with SLOT() and taking
    /// (const Fjord::Timed::WallClock::Info &, bool), whenever the daemon announces changed
    /// settings. The boolean tells whether the clock's time was changed, which this daemon does
    /// not announce: it is always false. The connection lives as long as the receiver.
    bool settings_changed_connect(QObject *receiver, const char *slot);
};

} // namespace Timed
} // namespace Fjord
