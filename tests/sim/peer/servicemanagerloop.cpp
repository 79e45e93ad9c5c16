#include "sim/peer/servicemanagerloop.h"

#include <QElapsedTimer>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <poll.h>

namespace {

constexpr quint32 GetService = 1;
constexpr quint32 CheckService = 2;
constexpr quint32 AddService = 3;
constexpr std::size_t MappingSize = 128 * 1024;
constexpr int PatienceMs = 10000;

template <typename T>
void append(QByteArray *bytes, const T &value)
{
    bytes->append(reinterpret_cast<const char *>(&value), sizeof value);
}

template <typename T>
T valueAt(const char *bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// The string16 at `position`, which moves behind it.
std::u16string takeString(const QByteArray &data, int *position)
{
    if (data.size() - *position < int(sizeof(qint32)))
        return {};
    const auto length = valueAt<qint32>(data.constData() + *position);
    *position += int(sizeof(qint32));
    const int size = (2 * length + 2 + 3) / 4 * 4;
    if (length < 0 || data.size() - *position < size)
        return {};
    const auto *units = reinterpret_cast<const char16_t *>(data.constData() + *position);
    *position += size;
    return std::u16string(units, static_cast<std::size_t>(length));
}

} // namespace

ServiceManagerLoop::ServiceManagerLoop(std::unique_ptr<Binder::Driver> driver)
    : m_driver(std::move(driver))
{
}

bool ServiceManagerLoop::begin()
{
    if (m_driver == nullptr || m_driver->map(MappingSize) == nullptr)
        return false;
    QElapsedTimer timer;
    timer.start();
    quint32 argument = 0;
    // A kernel's driver closes its predecessor's file a little later than that process ends.
    while (const int result = m_driver->control(BINDER_SET_CONTEXT_MGR, &argument)) {
        if (result != -EBUSY || timer.hasExpired(PatienceMs))
            return false;
        QThread::msleep(1);
    }
    append(&m_commands, quint32(BC_ENTER_LOOPER));
    return true;
}

void ServiceManagerLoop::run()
{
    QByteArray returns;
    while (true) {
        const QByteArray commands = std::exchange(m_commands, {});
        if (!exchange(commands, &returns))
            return;
        handle(returns);
        if (!m_commands.isEmpty())
            continue;
        pollfd descriptor = {m_driver->descriptor(), POLLIN, 0};
        ::poll(&descriptor, 1, -1);
    }
}

bool ServiceManagerLoop::exchange(const QByteArray &commands, QByteArray *returns)
{
    returns->resize(256);
    binder_write_read exchanged = {};
    exchanged.write_buffer = reinterpret_cast<binder_uintptr_t>(commands.constData());
    exchanged.write_size = static_cast<binder_size_t>(commands.size());
    exchanged.read_buffer = reinterpret_cast<binder_uintptr_t>(returns->data());
    exchanged.read_size = static_cast<binder_size_t>(returns->size());
    const int result = m_driver->control(BINDER_WRITE_READ, &exchanged);
    returns->resize(static_cast<int>(exchanged.read_consumed));
    const auto consumed = static_cast<int>(exchanged.write_consumed);
    m_commands.prepend(commands.mid(consumed));
    return result == 0 || result == -EAGAIN || result == -EINTR;
}

void ServiceManagerLoop::handle(const QByteArray &returns)
{
    for (int position = 0; position < returns.size();) {
        const auto code = valueAt<quint32>(returns.constData() + position);
        position += int(sizeof code);
        if (code == BR_TRANSACTION)
            serve(valueAt<binder_transaction_data>(returns.constData() + position));
        position += static_cast<int>(_IOC_SIZE(code));
    }
}

void ServiceManagerLoop::serve(const binder_transaction_data &call)
{
    m_replyData = reply(call);
    append(&m_commands, quint32(BC_FREE_BUFFER));
    append(&m_commands, call.data.ptr.buffer);
    if ((call.flags & TF_ONE_WAY) != 0)
        return;
    binder_transaction_data answer = {};
    answer.data_size = static_cast<binder_size_t>(m_replyData.size());
    answer.data.ptr.buffer = reinterpret_cast<binder_uintptr_t>(m_replyData.constData());
    answer.data.ptr.offsets = reinterpret_cast<binder_uintptr_t>(&m_replyOffset);
    if (m_replyData.size() == int(sizeof(flat_binder_object)))
        answer.offsets_size = sizeof m_replyOffset;
    append(&m_commands, quint32(BC_REPLY));
    append(&m_commands, answer);
}

QByteArray ServiceManagerLoop::reply(const binder_transaction_data &call)
{
    const auto *bytes = reinterpret_cast<const char *>(call.data.ptr.buffer);
    const QByteArray data(bytes, static_cast<int>(call.data_size));
    QByteArray answer;
    if (call.code != GetService && call.code != CheckService && call.code != AddService) {
        append(&answer, qint32(0));
        return answer;
    }
    int position = sizeof(qint32);
    takeString(data, &position);
    const std::u16string name = takeString(data, &position);
    if (call.code == AddService) {
        if (data.size() - position >= int(sizeof(flat_binder_object))) {
            const auto object = valueAt<flat_binder_object>(data.constData() + position);
            append(&m_commands, quint32(BC_ACQUIRE));
            append(&m_commands, object.handle);
            m_handles[name] = object.handle;
        }
        append(&answer, qint32(0));
        return answer;
    }
    const auto found = m_handles.find(name);
    if (found == m_handles.end()) {
        append(&answer, qint32(0));
        return answer;
    }
    flat_binder_object object = {};
    object.hdr.type = BINDER_TYPE_HANDLE;
    object.flags = 0x17f;
    object.handle = found->second;
    append(&answer, object);
    return answer;
}
