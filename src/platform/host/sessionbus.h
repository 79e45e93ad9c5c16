#pragma once

#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <systemd/sd-bus.h>

/// A connection to the session bus of the user whom the daemon serves
/// (DBUS_SESSION_BUS_ADDRESS), for calls that nobody waits for.
///
/// That bus is not the daemon's to trust: it may start late, restart, refuse or never answer.
/// Connecting and sending therefore never block and never fail loudly; the connection is made when
/// a call is to be sent and there is none. It is sd-bus and not QDBusConnection because the latter
/// blocks while it connects, and its library ends the process when the bus refuses the greeting.
class SessionBus
{
public:
    struct Unref
    {
        void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
        void operator()(sd_bus_message *message) const { sd_bus_message_unref(message); }
    };
    using Message = std::unique_ptr<sd_bus_message, Unref>;

    /// How many calls may wait for a bus that does not take them. All calls of one round, such as
    /// one for each app, wait while the connection is being made.
    static constexpr quint64 MaximumWaiting = 1024;

    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// A call without arguments yet; null when there is no bus to connect to, or too many calls
    /// wait for it already.
    Message createCall(const char *service, const char *path, const char *interface,
                       const char *member);

    /// Sends a call, made since the last return to the event loop, as soon as the connection
    /// allows. No reply is asked for; a call that cannot be sent is lost.
    void send(const Message &call);

private:
    bool connectToBus();
    bool isHungUp() const;
    bool isFull() const;
    void process();
    void watch();
    void drop();

    std::unique_ptr<sd_bus, Unref> m_bus;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_processTimer;
};
