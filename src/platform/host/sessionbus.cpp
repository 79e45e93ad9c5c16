#include "platform/host/sessionbus.h"

#include "platform/host/polltimeout.h"

#include <poll.h>

SessionBus::SessionBus()
{
    m_processTimer.setSingleShot(true);
    QObject::connect(&m_processTimer, &QTimer::timeout, &m_processTimer, [this] { process(); });
}

SessionBus::~SessionBus() = default;

SessionBus::Message SessionBus::createCall(const char *service, const char *path,
                                           const char *interface, const char *member)
{
    if (m_bus && isHungUp())
        drop();
    if ((!m_bus && !connectToBus()) || isFull())
        return nullptr;
    sd_bus_message *call = nullptr;
    if (sd_bus_message_new_method_call(m_bus.get(), &call, service, path, interface, member) < 0)
        return nullptr;
    sd_bus_message_set_expect_reply(call, false);
    return Message(call);
}

void SessionBus::send(const Message &call)
{
    if (!m_bus)
        return;
    sd_bus_send(m_bus.get(), call.get(), nullptr);
    watch();
}

bool SessionBus::connectToBus()
{
    sd_bus *bus = nullptr;
    if (sd_bus_new(&bus) < 0)
        return false;
    m_bus.reset(bus);
    if (sd_bus_set_address(bus, qgetenv("DBUS_SESSION_BUS_ADDRESS").constData()) < 0 ||
        sd_bus_set_bus_client(bus, true) < 0 || sd_bus_start(bus) < 0) {
        drop();
        return false;
    }
    watch();
    return m_bus != nullptr;
}

bool SessionBus::isHungUp() const
{
    pollfd polled{sd_bus_get_fd(m_bus.get()), POLLRDHUP, 0};
    return ::poll(&polled, 1, 0) != 0;
}

bool SessionBus::isFull() const
{
    uint64_t waiting = 0;
    sd_bus_get_n_queued_write(m_bus.get(), &waiting);
    return waiting >= MaximumWaiting;
}

void SessionBus::process()
{
    // One step at a time: a bus that sends without end must not keep the event loop from others.
    if (sd_bus_process(m_bus.get(), nullptr) < 0 || sd_bus_is_open(m_bus.get()) <= 0)
        drop();
    else
        watch();
}

void SessionBus::watch()
{
    const int descriptor = sd_bus_get_fd(m_bus.get());
    const int events = sd_bus_get_events(m_bus.get());
    if (descriptor < 0 || events < 0) {
        drop();
        return;
    }
    if (!m_readable || m_readable->socket() != descriptor) {
        const auto processSoon = [this] {
            m_readable->setEnabled(false);
            m_writable->setEnabled(false);
            m_processTimer.start(0);
        };
        m_readable = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        m_writable = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
        QObject::connect(m_readable.get(), &QSocketNotifier::activated, &m_processTimer,
                         processSoon);
        QObject::connect(m_writable.get(), &QSocketNotifier::activated, &m_processTimer,
                         processSoon);
    }
    m_readable->setEnabled((events & POLLIN) != 0);
    m_writable->setEnabled((events & POLLOUT) != 0);

    uint64_t timeout = NoTimeoutUs;
    sd_bus_get_timeout(m_bus.get(), &timeout);
    if (timeout == NoTimeoutUs)
        m_processTimer.stop();
    else
        m_processTimer.start(pollTimeoutMs(timeout, monotonicTimeUs()));
}

void SessionBus::drop()
{
    m_processTimer.stop();
    m_readable.reset();
    m_writable.reset();
    m_bus.reset();
}
