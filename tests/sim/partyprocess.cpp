#include "sim/partyprocess.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/android/binder.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

bool writeAll(int fd, const char *bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = ::write(fd, bytes, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool readAll(int fd, char *bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = ::read(fd, bytes, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// Fills in where the data and offsets of the next message lie.
void pointToMessage(char *command, const QByteArray &data, const QVector<quint64> &offsets)
{
    binder_transaction_data message;
    std::memcpy(&message, command, sizeof message);
    message.data.ptr.buffer = reinterpret_cast<binder_uintptr_t>(data.constData());
    message.data.ptr.offsets = reinterpret_cast<binder_uintptr_t>(offsets.constData());
    std::memcpy(command, &message, sizeof message);
}

// Messages are copied out of the mapping here, since the test cannot see it.
Return parseReturn(quint32 code, const char *payload)
{
    Return item;
    item.code = code;
    switch (code) {
    case BR_TRANSACTION:
    case BR_REPLY: {
        binder_transaction_data message;
        std::memcpy(&message, payload, sizeof message);
        item.id = message.target.ptr;
        item.cookie = message.cookie;
        item.callCode = message.code;
        item.flags = message.flags;
        item.senderPid = message.sender_pid;
        item.senderEuid = message.sender_euid;
        item.address = message.data.ptr.buffer;
        item.data = QByteArray(reinterpret_cast<const char *>(message.data.ptr.buffer),
                               static_cast<int>(message.data_size));
        const auto *offsets = reinterpret_cast<const quint64 *>(message.data.ptr.offsets);
        for (std::size_t i = 0; i < message.offsets_size / sizeof *offsets; ++i)
            item.offsets.append(offsets[i]);
        break;
    }
    case BR_INCREFS:
    case BR_ACQUIRE:
    case BR_RELEASE:
    case BR_DECREFS: {
        binder_ptr_cookie object;
        std::memcpy(&object, payload, sizeof object);
        item.id = object.ptr;
        item.cookie = object.cookie;
        break;
    }
    case BR_DEAD_BINDER:
    case BR_CLEAR_DEATH_NOTIFICATION_DONE:
        std::memcpy(&item.cookie, payload, sizeof item.cookie);
        break;
    default:
        break;
    }
    return item;
}

} // namespace

void PartyProcess::serve(int socket)
{
    PartyProcess process;
    QByteArray frame;
    while (readFrame(socket, &frame)) {
        QDataStream in(frame);
        quint32 request = 0;
        in >> request;
        QByteArray answer;
        QDataStream out(&answer, QIODevice::WriteOnly);
        process.perform(static_cast<PartyRequest>(request), in, out);
        if (!writeFrame(socket, answer))
            return;
    }
}

bool PartyProcess::writeFrame(int socket, const QByteArray &frame)
{
    const int size = frame.size();
    return writeAll(socket, reinterpret_cast<const char *>(&size), sizeof size) &&
           writeAll(socket, frame.constData(), static_cast<std::size_t>(size));
}

bool PartyProcess::readFrame(int socket, QByteArray *frame)
{
    int size = 0;
    if (!readAll(socket, reinterpret_cast<char *>(&size), sizeof size))
        return false;
    frame->resize(size);
    return readAll(socket, frame->data(), static_cast<std::size_t>(size));
}

void PartyProcess::perform(PartyRequest request, QDataStream &in, QDataStream &out)
{
    switch (request) {
    case PartyRequest::Open:
        return open(in, out);
    case PartyRequest::Map:
        return map(in, out);
    case PartyRequest::Control:
        return control(in, out);
    case PartyRequest::Exchange:
        return exchange(in, out);
    case PartyRequest::Poll: {
        qint32 timeoutMs = 0;
        in >> timeoutMs;
        pollfd descriptor = {m_driver->descriptor(), POLLIN, 0};
        out << (::poll(&descriptor, 1, timeoutMs) == 1 && (descriptor.revents & POLLIN) != 0);
        return;
    }
    case PartyRequest::MakeFile: {
        QByteArray content;
        in >> content;
        const int file = ::memfd_create("test", MFD_CLOEXEC);
        out << (::pwrite(file, content.constData(), static_cast<std::size_t>(content.size()), 0) ==
                        content.size()
                    ? file
                    : -1);
        return;
    }
    case PartyRequest::ReadFile: {
        qint32 file = -1;
        in >> file;
        QByteArray content(4096, '\0');
        const ssize_t size = ::pread(file, content.data(), std::size_t(content.size()), 0);
        content.resize(static_cast<int>(qMax<ssize_t>(size, 0)));
        out << content;
        return;
    }
    case PartyRequest::Close:
        m_driver.reset();
        return;
    }
}

void PartyProcess::open(QDataStream &in, QDataStream &out)
{
    QByteArray path;
    in >> path;
    m_driver = Binder::Driver::open(path.constData());
    out << qint32(m_driver == nullptr ? -errno : 0);
}

void PartyProcess::map(QDataStream &in, QDataStream &out)
{
    quint64 size = 0;
    in >> size;
    const void *mapping = m_driver->map(size);
    out << qint32(mapping == nullptr ? -errno : 0);
}

void PartyProcess::control(QDataStream &in, QDataStream &out)
{
    quint64 request = 0;
    QByteArray argument;
    in >> request >> argument;
    const int result = m_driver->control(request, argument.data());
    out << qint32(result) << argument;
}

void PartyProcess::exchange(QDataStream &in, QDataStream &out)
{
    QByteArray commands;
    quint32 messageCount = 0;
    quint64 readSize = 0;
    in >> commands >> readSize >> messageCount;
    QVector<QByteArray> data(static_cast<int>(messageCount));
    QVector<QVector<quint64>> offsets(static_cast<int>(messageCount));
    for (int i = 0; i < data.size(); ++i)
        in >> data[i] >> offsets[i];

    int next = 0;
    for (int position = 0; position < commands.size();) {
        quint32 code = 0;
        std::memcpy(&code, commands.constData() + position, sizeof code);
        position += int(sizeof code);
        if ((code == BC_TRANSACTION || code == BC_REPLY) && next < data.size()) {
            pointToMessage(commands.data() + position, data.at(next), offsets.at(next));
            ++next;
        }
        position += static_cast<int>(_IOC_SIZE(code));
    }

    QByteArray returns(static_cast<int>(readSize), '\0');
    binder_write_read exchanged = {};
    exchanged.write_size = static_cast<binder_size_t>(commands.size());
    exchanged.write_buffer = reinterpret_cast<binder_uintptr_t>(commands.constData());
    exchanged.read_size = readSize;
    exchanged.read_buffer = reinterpret_cast<binder_uintptr_t>(returns.data());
    const int result = m_driver->control(BINDER_WRITE_READ, &exchanged);

    QVector<Return> items;
    for (int position = 0; position < int(exchanged.read_consumed);) {
        quint32 code = 0;
        std::memcpy(&code, returns.constData() + position, sizeof code);
        items.append(parseReturn(code, returns.constData() + position + sizeof code));
        position += int(sizeof code) + static_cast<int>(_IOC_SIZE(code));
    }
    out << qint32(result) << quint64(exchanged.write_consumed) << items;
}
