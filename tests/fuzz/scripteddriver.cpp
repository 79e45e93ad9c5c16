#include "fuzz/scripteddriver.h"

#include "fakes/pointer.h"
#include "fuzz/fuzztarget.h"
#include "platform/binder/address.h"
#include "platform/binder/flatobject.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <linux/android/binder.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int MaxMessageBytes = 1024;
constexpr int MaxPositions = 8;

/// The longest return: BR_TRANSACTION_SEC_CTX.
constexpr int LongestReturn = 80;

template <typename Value>
Value decode(const char *bytes)
{
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <typename... Payload>
void append(QByteArray *returns, quint32 code, const Payload &...payload)
{
    returns->append(reinterpret_cast<const char *>(&code), sizeof code);
    (returns->append(reinterpret_cast<const char *>(&payload), int(sizeof payload)), ...);
}

/// 0 for what is no object.
std::size_t objectSize(quint32 type)
{
    switch (type) {
    case BINDER_TYPE_BINDER:
    case BINDER_TYPE_WEAK_BINDER:
    case BINDER_TYPE_HANDLE:
    case BINDER_TYPE_WEAK_HANDLE:
    case BINDER_TYPE_FD:
        return sizeof(flat_binder_object);
    case BINDER_TYPE_PTR:
        return sizeof(binder_buffer_object);
    case BINDER_TYPE_FDA:
        return sizeof(binder_fd_array_object);
    default:
        return 0;
    }
}

/// Reads all that a command points to, as the kernel copies it.
void readMessage(const binder_transaction_data &message)
{
    std::vector<char> bytes(message.data_size + message.offsets_size);
    const auto *data = pointer<char>(message.data.ptr.buffer);
    const auto *offsets = pointer<char>(message.data.ptr.offsets);
    std::copy_n(data, message.data_size, bytes.begin());
    std::copy_n(offsets, message.offsets_size,
                bytes.begin() + static_cast<std::ptrdiff_t>(message.data_size));
}

} // namespace

ScriptedDriver::Script *ScriptedDriver::script = nullptr;

std::unique_ptr<Binder::Driver> Binder::Driver::open(const char *)
{
    if (ScriptedDriver::script == nullptr) {
        errno = ENOENT;
        return nullptr;
    }
    return std::make_unique<ScriptedDriver>();
}

ScriptedDriver::ScriptedDriver()
    : m_descriptor(::eventfd(1, EFD_NONBLOCK | EFD_CLOEXEC))
{
    script->isOpen = true;
}

ScriptedDriver::~ScriptedDriver()
{
    ::close(m_descriptor);
    script->isOpen = false;
    if (m_lost)
        return;
    expect(m_buffers.empty(), "all buffers are given back");
    for (const auto &owed : m_owed) {
        expect(owed.second == 0, "all that was owed is given",
               QString::number(owed.first, 16) + QLatin1Char(' ') + QString::number(owed.second));
    }
    for (const auto &reference : m_references)
        expect(reference.second == 0, "all references are given back");
}

int ScriptedDriver::control(unsigned long request, void *argument)
{
    switch (request) {
    case BINDER_VERSION:
        static_cast<binder_version *>(argument)->protocol_version = BINDER_CURRENT_PROTOCOL_VERSION;
        return 0;
    case BINDER_SET_MAX_THREADS:
        return 0;
    default:
        expect(request == BINDER_WRITE_READ && !m_lost, "a known request of an open device");
        return writeRead(static_cast<binder_write_read *>(argument));
    }
}

int ScriptedDriver::writeRead(binder_write_read *exchange)
{
    const bool reads = exchange->read_size > 0;
    const bool stopsEarly = reads && !script->isOver && script->input.below(8) == 1;
    exchange->write_consumed =
        write(pointer<char>(exchange->write_buffer), exchange->write_size, stopsEarly);
    if (!reads)
        return 0;
    QByteArray returns;
    const int result = read(&returns);
    expect(static_cast<quint64>(returns.size()) <= exchange->read_size, "room for the longest");
    std::copy(returns.cbegin(), returns.cend(),
              const_cast<char *>(pointer<char>(exchange->read_buffer)));
    exchange->read_consumed = static_cast<quint64>(returns.size());
    return result;
}

std::size_t ScriptedDriver::write(const char *bytes, std::size_t size, bool stopsEarly)
{
    std::size_t done = 0;
    while (done < size) {
        const auto command = decode<quint32>(bytes + done);
        done += sizeof command;
        execute(command, bytes + done);
        done += _IOC_SIZE(command);
        if (stopsEarly)
            break;
    }
    expect(done <= size, "whole commands");
    return done;
}

void ScriptedDriver::execute(quint32 command, const char *payload)
{
    switch (command) {
    case BC_ENTER_LOOPER:
        break;
    case BC_TRANSACTION: {
        const auto message = decode<binder_transaction_data>(payload);
        expect(message.target.handle == 0 || m_references[message.target.handle] > 0,
               "calls go to what is held");
        readMessage(message);
        break;
    }
    case BC_REPLY:
        readMessage(decode<binder_transaction_data>(payload));
        expect(m_owed[command]-- > 0, "an answer for each call");
        break;
    case BC_INCREFS_DONE:
    case BC_ACQUIRE_DONE:
    case BC_DEAD_BINDER_DONE:
        expect(m_owed[command]-- > 0, "a confirmation for each request");
        break;
    case BC_FREE_BUFFER:
        freeBuffer(decode<quint64>(payload));
        break;
    case BC_ACQUIRE:
        ++m_references[decode<quint32>(payload)];
        break;
    case BC_RELEASE:
        expect(m_references[decode<quint32>(payload)]-- > 0, "a reference that is held");
        m_deathCookies.erase(decode<quint32>(payload));
        break;
    case BC_REQUEST_DEATH_NOTIFICATION: {
        const auto pair = decode<binder_handle_cookie>(payload);
        expect(m_references[quint32(pair.handle)] > 0, "deaths of what is held");
        expect(m_deathCookies.emplace(quint32(pair.handle), quint64(pair.cookie)).second,
               "one request for a death");
        break;
    }
    case BC_CLEAR_DEATH_NOTIFICATION: {
        const auto pair = decode<binder_handle_cookie>(payload);
        const auto asked = m_deathCookies.find(quint32(pair.handle));
        expect(asked != m_deathCookies.end() && asked->second == pair.cookie, "a death asked for");
        m_deathCookies.erase(asked);
        break;
    }
    default:
        expect(false, "a known command", QString::number(command, 16));
    }
}

int ScriptedDriver::read(QByteArray *returns)
{
    if (script->isOver || script->input.isEmpty()) {
        script->isOver = true;
        m_saidNothing = !m_saidNothing;
        if (m_saidNothing)
            return -EAGAIN;
        append(returns, BR_DEAD_REPLY); // whoever waits for an answer has one
        return 0;
    }
    switch (script->input.below(64)) {
    case 1:
        m_lost = true;
        return -EIO;
    case 2:
        return -EINTR;
    case 3:
        return -EAGAIN;
    default:
        append(returns, BR_NOOP);
        while (returns->size() + LongestReturn <= 256 && produce(returns)) {
        }
        return 0;
    }
}

/// False when the read ends with it.
bool ScriptedDriver::produce(QByteArray *returns)
{
    Input &input = script->input;
    switch (input.below(20)) {
    case 0:
        return false;
    case 1:
        append(returns, BR_INCREFS, input.number<quint64>(), input.number<quint64>());
        ++m_owed[BC_INCREFS_DONE];
        return true;
    case 2:
        append(returns, BR_ACQUIRE, input.number<quint64>(), input.number<quint64>());
        ++m_owed[BC_ACQUIRE_DONE];
        return true;
    case 3:
        append(returns, BR_RELEASE, input.number<quint64>(), input.number<quint64>());
        return true;
    case 4:
        append(returns, BR_DECREFS, input.number<quint64>(), input.number<quint64>());
        return true;
    case 5:
    case 6:
    case 7:
        produceCall(returns);
        return false;
    case 8:
    case 9:
        append(returns, BR_REPLY, makeMessage());
        return false;
    case 10:
    case 11:
        append(returns, BR_TRANSACTION_COMPLETE);
        return true;
    case 12:
        append(returns, BR_DEAD_REPLY);
        return true;
    case 13:
        append(returns, BR_FAILED_REPLY);
        return true;
    case 14:
        append(returns, BR_FROZEN_REPLY);
        return true;
    case 15:
        append(returns, BR_ERROR, input.number<qint32>());
        return true;
    case 16:
        append(returns, BR_DEAD_BINDER, deathCookie());
        ++m_owed[BC_DEAD_BINDER_DONE];
        return false;
    case 17:
        append(returns, BR_CLEAR_DEATH_NOTIFICATION_DONE, deathCookie());
        return true;
    case 18: { // one of a kernel to come
        const int size = input.below(64);
        append(returns, static_cast<quint32>(_IOC(_IOC_READ, 'r', 64 + input.below(64), size)));
        returns->append(input.bytes(static_cast<std::size_t>(size)).leftJustified(size, '\0'));
        return true;
    }
    default: // cut off, or none at all
        returns->append(input.bytes(static_cast<std::size_t>(input.below(20))));
        return false;
    }
}

void ScriptedDriver::produceCall(QByteArray *returns)
{
    Input &input = script->input;
    const std::vector<quint64> &objects = script->objects;
    const auto selected = static_cast<std::size_t>(input.below(4));
    const bool secure = input.below(8) == 1;
    const auto code = input.yes() ? static_cast<quint32>(input.below(8)) : input.number<quint32>();
    binder_transaction_data call = makeMessage();
    call.target.ptr = selected < objects.size() ? objects[selected] : selected;
    call.cookie = call.target.ptr;
    call.code = code;
    if ((call.flags & TF_ONE_WAY) == 0)
        ++m_owed[BC_REPLY];
    if (secure)
        append(returns, BR_TRANSACTION_SEC_CTX, call, quint64(0));
    else
        append(returns, BR_TRANSACTION, call);
}

binder_transaction_data ScriptedDriver::makeMessage()
{
    Input &input = script->input;
    auto buffer = std::make_unique<Buffer>();
    const quint8 flags = input.number<quint8>();
    for (int count = input.below(MaxPositions); count > 0; --count)
        buffer->positions.push_back(input.number<quint16>());
    const QByteArray content =
        input.bytes(std::min<std::size_t>(input.number<quint16>(), MaxMessageBytes));
    // Also an empty message has an address of its own. A vector of this very size has no room
    // behind its end.
    buffer->bytes.assign(content.cbegin(), content.cend());
    buffer->bytes.shrink_to_fit();
    if (buffer->bytes.empty())
        buffer->bytes.resize(1);
    translateObjects(buffer.get());

    binder_transaction_data message = {};
    message.flags = flags;
    message.data_size = static_cast<quint64>(content.size());
    message.data.ptr.buffer = Binder::address(buffer->bytes.data());
    message.offsets_size = buffer->positions.size() * sizeof(quint64);
    message.data.ptr.offsets = Binder::address(buffer->positions.data());
    m_buffers.emplace(message.data.ptr.buffer, std::move(buffer));
    return message;
}

/// What the kernel does with the positions and descriptors of a sender: it delivers nothing else.
void ScriptedDriver::translateObjects(Buffer *buffer)
{
    std::vector<quint64> positions;
    std::swap(positions, buffer->positions);
    std::sort(positions.begin(), positions.end());
    quint64 free = 0;
    for (const quint64 position : positions) {
        const std::size_t room =
            buffer->bytes.size() - std::min<std::size_t>(buffer->bytes.size(), position);
        if (position % 4 != 0 || position < free || room < sizeof(Binder::FlatObject))
            continue;
        char *place = buffer->bytes.data() + position;
        const quint32 type = decode<quint32>(place);
        const std::size_t size = objectSize(type);
        if (size == 0 || size > room)
            continue;
        if (type == BINDER_TYPE_FD) {
            auto object = decode<Binder::FlatObject>(place);
            object.handle = static_cast<quint32>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
            std::memcpy(place, &object, sizeof object);
        }
        buffer->positions.push_back(position);
        free = position + size;
    }
}

void ScriptedDriver::freeBuffer(quint64 address)
{
    const auto buffer = m_buffers.find(address);
    expect(buffer != m_buffers.end(), "a buffer that was not given back");
    m_buffers.erase(buffer);
}

quint64 ScriptedDriver::deathCookie()
{
    Input &input = script->input;
    const auto selected = static_cast<std::size_t>(input.below(8));
    if (selected >= m_deathCookies.size())
        return input.number<quint64>();
    return std::next(m_deathCookies.begin(), static_cast<std::ptrdiff_t>(selected))->second;
}
