#pragma once

#include "binder/umbrabinderconnection.h"
#include "platform/timed/wallclock.h"

#include <QByteArray>
#include <QString>

/// Keeps the runtime's time zone that of the host: pushes it into the Android alarm manager
/// whenever the host's zone changes and whenever the alarm manager becomes reachable.
class UmbraTimezoneMonitor : public UmbraBinderConnection
{
    Q_OBJECT

public:
    explicit UmbraTimezoneMonitor(QObject *parent = nullptr);
    ~UmbraTimezoneMonitor() override;

public Q_SLOTS:
    /// The host's time settings have changed. `time_changed` tells whether the clock was set,
    /// which is of no interest here.
    void settingsChanged(const Fjord::Timed::WallClock::Info &newInfo, bool time_changed);
    void onServiceConnectionChanged(bool connected);

private:
    /// Blocks until the runtime answers. One warning when it refuses; nothing without a
    /// connection.
    void setTimeZone(const QByteArray &zone);

    QString m_timezone; ///< Olson name
};
