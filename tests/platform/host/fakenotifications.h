#pragma once

#include "platform/host/messagekeeper.h"

/// The host's notification service on a test's own bus: keeps what it is asked to show.
class FakeNotifications : public MessageKeeper
{
public:
    explicit FakeNotifications(const QString &address)
        : MessageKeeper(address, QStringLiteral("org.freedesktop.Notifications"),
                        QStringLiteral("/org/freedesktop/Notifications"))
    {
    }
};
