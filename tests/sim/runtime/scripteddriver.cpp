#include "sim/runtime/scripteddriver.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>

using namespace SimRuntime;

namespace {

Parcel parcelOf(const binder_transaction_data &transaction)
{
    Parcel parcel;
    parcel.data = QByteArray(reinterpret_cast<const char *>(quintptr(transaction.data.ptr.buffer)),
                             int(transaction.data_size));
    const auto *offsets = reinterpret_cast<const quint64 *>(quintptr(transaction.data.ptr.offsets));
    for (quint64 i = 0; i < transaction.offsets_size / sizeof(quint64); ++i)
        parcel.objects.append(offsets[i]);
    return parcel;
}

quint64 addressOf(const void *pointer)
{
    return quint64(reinterpret_cast<quintptr>(pointer));
}

} // namespace

QByteArray driverCommand(quint32 code)
{
    QByteArray stream;
    appendCommand(&stream, code);
    return stream;
}

ScriptedDriver::ScriptedDriver()
    : m_readiness(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

ScriptedDriver::~ScriptedDriver()
{
    close(m_readiness);
}

const void *ScriptedDriver::map(std::size_t)
{
    return this; // nobody reads from the mapping but through the addresses given out
}

void ScriptedDriver::give(const QByteArray &commands)
{
    m_reads.enqueue({driverCommand(BR_NOOP) + commands, 0});
    updateReadiness();
}

void ScriptedDriver::giveError(int error)
{
    m_reads.enqueue({{}, error});
    updateReadiness();
}

quint64 ScriptedDriver::giveMessage(quint32 command, quint64 target, quint32 code, quint32 flags,
                                    const Parcel &parcel)
{
    auto message = std::make_shared<Message>();
    message->parcel = parcel;
    message->transaction = {};
    message->transaction.target.ptr = target;
    message->transaction.cookie = target;
    message->transaction.code = code;
    message->transaction.flags = flags;
    message->transaction.sender_pid = 4711;
    message->transaction.data_size = quint64(parcel.data.size());
    message->transaction.offsets_size = quint64(parcel.objects.size()) * sizeof(quint64);
    message->transaction.data.ptr.buffer = addressOf(message->parcel.data.constData());
    message->transaction.data.ptr.offsets = addressOf(message->parcel.objects.constData());
    m_messages.append(message);
    give(driverCommand(command, message->transaction));
    return message->transaction.data.ptr.buffer;
}

int ScriptedDriver::control(unsigned long request, void *argument)
{
    if (request == BINDER_VERSION) {
        static_cast<binder_version *>(argument)->protocol_version = protocolVersion;
        return 0;
    }
    if (request == BINDER_SET_CONTEXT_MGR)
        return hasContextManager ? -EBUSY : 0;
    if (request != BINDER_WRITE_READ)
        return 0;

    auto *exchange = static_cast<binder_write_read *>(argument);
    auto size = int(exchange->write_size);
    if (m_largestWrite >= 0)
        size = qMin(size, m_largestWrite);
    keep(QByteArray(reinterpret_cast<const char *>(quintptr(exchange->write_buffer)), size));
    exchange->write_consumed = quint64(size);
    if (exchange->read_size == 0)
        return 0;
    if (m_reads.isEmpty())
        return -EAGAIN;
    const Read read = m_reads.dequeue();
    updateReadiness();
    memcpy(reinterpret_cast<void *>(quintptr(exchange->read_buffer)), read.commands.constData(),
           size_t(read.commands.size()));
    exchange->read_consumed = quint64(read.commands.size());
    return read.error;
}

void ScriptedDriver::keep(const QByteArray &stream)
{
    m_partlyWritten += stream;
    while (m_partlyWritten.size() >= int(sizeof(quint32))) {
        Written written;
        memcpy(&written.command, m_partlyWritten.constData(), sizeof written.command);
        const int end = int(sizeof written.command) + int(_IOC_SIZE(written.command));
        if (m_partlyWritten.size() < end)
            return;
        written.payload =
            m_partlyWritten.mid(int(sizeof written.command), int(_IOC_SIZE(written.command)));
        m_partlyWritten.remove(0, end);
        if (written.command == BC_TRANSACTION || written.command == BC_REPLY)
            written.parcel =
                parcelOf(payloadAs<binder_transaction_data>({written.command, written.payload}));
        m_written.append(written);
    }
}

void ScriptedDriver::updateReadiness()
{
    eventfd_t count = 0;
    if (m_reads.isEmpty())
        eventfd_read(m_readiness, &count);
    else
        eventfd_write(m_readiness, 1);
}

QVector<ScriptedDriver::Written> ScriptedDriver::takeWritten()
{
    return std::exchange(m_written, {});
}
