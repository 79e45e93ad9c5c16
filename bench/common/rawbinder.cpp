#include "common/rawbinder.h"

#include <QString>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>

namespace {

constexpr std::size_t MappingSize = std::size_t(1024) * 1024;
constexpr std::uint32_t ContextManager = 0;
constexpr char ContextManagerInterface[] = "android.os.IServiceManager";
constexpr std::uint32_t CheckService = 2;
constexpr std::uint32_t AddService = 3;
constexpr std::int32_t DumpFlags = 8;
constexpr std::uint32_t ObjectFlags = 0x13;
constexpr std::uint64_t OwnObject = 1;

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "binder: %s\n", what);
    std::exit(EXIT_FAILURE);
}

template <typename Item>
const Item *pointer(binder_uintptr_t address)
{
    return reinterpret_cast<const Item *>(static_cast<std::uintptr_t>(address));
}

binder_uintptr_t address(const void *item)
{
    return reinterpret_cast<std::uintptr_t>(item);
}

QByteArray copyOf(const binder_transaction_data &transaction)
{
    return QByteArray(pointer<char>(transaction.data.ptr.buffer),
                      static_cast<int>(transaction.data_size));
}

} // namespace

RawParcel::RawParcel(const char *interface)
{
    appendInt32(0); // strict-mode policy
    appendString(QString::fromLatin1(interface));
}

void RawParcel::appendInt32(std::int32_t value)
{
    m_data.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void RawParcel::appendString(const QString &text)
{
    appendInt32(text.size());
    m_data.append(reinterpret_cast<const char *>(text.utf16()),
                  (text.size() + 1) * static_cast<int>(sizeof(QChar)));
    m_data.append(-m_data.size() & 3, '\0');
}

void RawParcel::appendBytes(const QByteArray &bytes)
{
    appendInt32(bytes.size());
    m_data.append(bytes);
    m_data.append(-m_data.size() & 3, '\0');
}

void RawParcel::appendLocalObject(std::uint64_t id)
{
    const std::uint64_t position = static_cast<std::uint64_t>(m_data.size());
    m_objects.append(reinterpret_cast<const char *>(&position), sizeof position);
    flat_binder_object object = {};
    object.hdr.type = BINDER_TYPE_BINDER;
    object.flags = ObjectFlags;
    object.binder = id;
    object.cookie = id;
    m_data.append(reinterpret_cast<const char *>(&object), sizeof object);
}

RawBinder::RawBinder(const char *device)
    : m_driver(Binder::Driver::open(device))
{
    std::uint32_t threads = 0;
    if (m_driver == nullptr || m_driver->control(BINDER_SET_MAX_THREADS, &threads) != 0 ||
        m_driver->map(MappingSize) == nullptr)
        fail("cannot use the device");
    append(BC_ENTER_LOOPER, nullptr, 0);
    flush();
}

void RawBinder::append(std::uint32_t command, const void *payload, std::size_t size)
{
    m_commands.append(reinterpret_cast<const char *>(&command), sizeof command);
    m_commands.append(static_cast<const char *>(payload), static_cast<int>(size));
}

/// Has the commands taken, and says how many bytes of returns there are now.
std::size_t RawBinder::exchange(std::size_t readSize)
{
    binder_write_read exchanged = {};
    exchanged.write_buffer = address(m_commands.constData());
    exchanged.write_size = static_cast<binder_size_t>(m_commands.size());
    exchanged.read_buffer = address(m_returns);
    exchanged.read_size = readSize;
    const int error = m_driver->control(BINDER_WRITE_READ, &exchanged);
    m_commands.remove(0, static_cast<int>(exchanged.write_consumed));
    if (error != 0 && error != -EAGAIN && error != -EINTR)
        fail("lost the device");
    return exchanged.read_consumed;
}

void RawBinder::flush()
{
    exchange(0);
}

void RawBinder::wait()
{
    pollfd waited = {m_driver->descriptor(), POLLIN, 0};
    ::poll(&waited, 1, -1);
}

/// Hands over code and payload of all that the driver returns now.
template <typename Handler>
void RawBinder::forEachReturn(const Handler &handle)
{
    const std::size_t size = exchange(sizeof m_returns);
    for (std::size_t at = 0; at < size;) {
        std::uint32_t returned = 0;
        std::memcpy(&returned, m_returns + at, sizeof returned);
        const char *payload = m_returns + at + sizeof returned;
        at += sizeof returned + _IOC_SIZE(returned);
        acknowledge(returned, payload);
        handle(returned, payload);
    }
}

bool RawBinder::isReadable() const
{
    pollfd polled = {m_driver->descriptor(), POLLIN, 0};
    return ::poll(&polled, 1, 0) > 0;
}

void RawBinder::acknowledge(std::uint32_t code, const char *payload)
{
    if (code == BR_INCREFS)
        append(BC_INCREFS_DONE, payload, sizeof(binder_ptr_cookie));
    else if (code == BR_ACQUIRE)
        append(BC_ACQUIRE_DONE, payload, sizeof(binder_ptr_cookie));
}

QByteArray RawBinder::call(std::uint32_t handle, std::uint32_t code, const RawParcel &parcel,
                           std::uint32_t *handleInReply)
{
    binder_transaction_data request = {};
    request.target.handle = handle;
    request.code = code;
    request.data_size = static_cast<binder_size_t>(parcel.data().size());
    request.data.ptr.buffer = address(parcel.data().constData());
    request.offsets_size = static_cast<binder_size_t>(parcel.objects().size());
    request.data.ptr.offsets = address(parcel.objects().constData());
    append(BC_TRANSACTION, request);

    bool answered = false;
    QByteArray data;
    const auto takeReply = [&](std::uint32_t returned, const char *payload) {
        if (returned == BR_DEAD_REPLY || returned == BR_FAILED_REPLY)
            fail("a call failed");
        if (returned != BR_REPLY)
            return;
        binder_transaction_data reply = {};
        std::memcpy(&reply, payload, sizeof reply);
        data = copyOf(reply);
        if (handleInReply != nullptr && reply.offsets_size > 0) {
            flat_binder_object object = {};
            std::memcpy(&object, data.constData(), sizeof object);
            *handleInReply = object.handle;
            append(BC_ACQUIRE, object.handle);
        }
        append(BC_FREE_BUFFER, reply.data.ptr.buffer);
        answered = true;
    };
    flush(); // there is no answer yet, and a kernel's driver logs each read that finds nothing
    while (!answered) {
        wait();
        forEachReturn(takeReply);
    }
    return data;
}

void RawBinder::registerName(const QString &name)
{
    RawParcel parcel(ContextManagerInterface);
    parcel.appendString(name);
    parcel.appendLocalObject(OwnObject);
    parcel.appendInt32(0); // for isolated processes, too
    parcel.appendInt32(DumpFlags);
    call(ContextManager, AddService, parcel);
    flush();
}

std::uint32_t RawBinder::handleOf(const QString &name)
{
    RawParcel parcel(ContextManagerInterface);
    parcel.appendString(name);
    std::uint32_t handle = 0;
    call(ContextManager, CheckService, parcel, &handle);
    return handle;
}

void RawBinder::serve(const Serve &serve)
{
    const auto answerCall = [&](std::uint32_t returned, const char *payload) {
        if (returned != BR_TRANSACTION)
            return;
        binder_transaction_data transaction = {};
        std::memcpy(&transaction, payload, sizeof transaction);
        answer(transaction, serve);
    };
    do {
        forEachReturn(answerCall);
    } while (!m_commands.isEmpty() || isReadable());
}

void RawBinder::answer(const binder_transaction_data &transaction, const Serve &serve)
{
    const QByteArray data = copyOf(transaction);
    append(BC_FREE_BUFFER, transaction.data.ptr.buffer);
    m_word = serve(transaction.code, data);
    if ((transaction.flags & TF_ONE_WAY) != 0)
        return;
    binder_transaction_data reply = {};
    reply.data_size = sizeof m_word;
    reply.data.ptr.buffer = address(&m_word);
    append(BC_REPLY, reply);
}
