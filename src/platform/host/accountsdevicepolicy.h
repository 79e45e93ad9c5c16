#pragma once

#include "platform/host/devicepolicy.h"
#include "platform/host/seat.h"

#include <QDBusConnection>

#include <functional>

/// The parental controls of the seat's user, as AccountsService publishes them on the system bus:
/// the property AllowUserInstallation of "com.endlessm.ParentalControls.AppFilter". A host without
/// that service, or whose service does not know that interface, has no policy: apps may be
/// installed. A service that is there and does not answer leaves it at not allowed.
class AccountsDevicePolicy final : public DevicePolicy
{
public:
    /// How long both questions together may take.
    static constexpr int AnswerTimeoutMs = 5000;

    explicit AccountsDevicePolicy(const QDBusConnection &bus = QDBusConnection::systemBus(),
                                  std::function<std::optional<uid_t>()> seatUser = activeSeatUser,
                                  int timeoutMs = AnswerTimeoutMs);

    bool mayInstallApps() override;

private:
    QDBusConnection m_bus;
    std::function<std::optional<uid_t>()> m_seatUser;
    int m_timeoutMs;
};
