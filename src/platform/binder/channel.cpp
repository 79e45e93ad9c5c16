#include "platform/binder/channel.h"

#include "platform/binder/address.h"
#include "platform/binder/driver.h"
#include "platform/binder/drivercategory.h"

#include <QString>

#include <cerrno>
#include <cstdint>
#include <linux/android/binder.h>
#include <poll.h>

namespace Binder {

static_assert(sizeof(binder_write_read) == 48, "64-bit driver protocol");
static_assert(sizeof(binder_transaction_data) == 64, "64-bit driver protocol");
static_assert(sizeof(binder_handle_cookie) == 12, "64-bit driver protocol");
static_assert(sizeof(binder_ptr_cookie) == 16, "64-bit driver protocol");
static_assert(BINDER_CURRENT_PROTOCOL_VERSION == 8, "64-bit driver protocol");

namespace {

// The most that the driver ever uses. Half of it may be filled by one-way calls that wait to be
// served; beyond that they are lost for their sender. The runtime announces apps, icons included,
// in that way, and now and then this process is busy for seconds. Pages are only taken while a
// message lies in them, so the room costs nothing but addresses.
constexpr std::size_t MappingSize = std::size_t(4) * 1024 * 1024;

// All calls are served on the one thread that opened the device.
constexpr quint32 AdditionalThreads = 0;

int prepare(Driver &driver)
{
    binder_version version = {};
    if (const int error = driver.control(BINDER_VERSION, &version))
        return error;
    if (version.protocol_version != BINDER_CURRENT_PROTOCOL_VERSION)
        return -EPROTONOSUPPORT;
    quint32 threads = AdditionalThreads;
    if (const int error = driver.control(BINDER_SET_MAX_THREADS, &threads))
        return error;
    if (driver.map(MappingSize) == nullptr)
        return -errno;
    return 0;
}

} // namespace

std::unique_ptr<Channel> Channel::open(const QByteArray &device)
{
    std::unique_ptr<Driver> driver = Driver::open(device.constData());
    const int error = driver == nullptr ? -errno : prepare(*driver);
    if (error != 0) {
        qCDebug(lcBinderDriver) << "Cannot use binder device" << device << qt_error_string(-error);
        return nullptr;
    }
    std::unique_ptr<Channel> channel(new Channel(device, std::move(driver)));
    channel->queue(BC_ENTER_LOOPER);
    channel->flush();
    return channel->isLost() ? nullptr : std::move(channel);
}

Channel::Channel(const QByteArray &device, std::unique_ptr<Driver> driver)
    : m_device(device)
    , m_driver(std::move(driver))
{
}

Channel::~Channel() = default;

void Channel::flush()
{
    if (hasCommands())
        exchange(nullptr, 0);
}

std::size_t Channel::exchange(char *buffer, std::size_t size)
{
    if (m_lost)
        return 0;
    binder_write_read exchange = {};
    exchange.write_buffer = address(m_commands.data());
    exchange.write_size = m_commands.size();
    exchange.read_buffer = address(buffer);
    exchange.read_size = size;
    const int error = m_driver->control(BINDER_WRITE_READ, &exchange);

    // valid also when nothing could be read: what was taken must never be written again
    m_commands.consume(exchange.write_consumed);
    m_bytesTaken += exchange.write_consumed;
    if (error != 0 && error != -EAGAIN && error != -EINTR)
        lose(-error);
    return exchange.read_consumed;
}

void Channel::wait()
{
    if (m_lost)
        return;
    pollfd descriptor = {m_driver->descriptor(), POLLIN, 0};
    if (poll(&descriptor, 1, -1) < 0) {
        if (errno != EINTR)
            lose(errno);
    } else if ((descriptor.revents & POLLIN) == 0) {
        lose(EIO);
    }
}

bool Channel::isReadable() const
{
    pollfd descriptor = {m_driver->descriptor(), POLLIN, 0};
    return !m_lost && poll(&descriptor, 1, 0) > 0;
}

int Channel::descriptor() const
{
    return m_driver->descriptor();
}

void Channel::lose(int error)
{
    m_lost = true;
    m_commands.clear();
    qCWarning(lcBinderDriver) << "Lost binder device" << m_device << qt_error_string(error);
}

} // namespace Binder
