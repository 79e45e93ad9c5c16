#include "fakes/fakeopenfile.h"

#include "fakes/fakebinder.h"
#include "fakes/pointer.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <linux/android/binder.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace {

template <typename Value>
Value decode(const char *bytes)
{
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

} // namespace

std::unique_ptr<Binder::Driver> FakeOpenFile::open(FakeBinder *binder, const char *device)
{
    if (binder == nullptr || binder->m_device != device) {
        errno = ENOENT;
        return nullptr;
    }
    if (binder->m_file != nullptr && !binder->m_file->m_broken)
        FakeBinder::violation(QStringLiteral("the device was opened twice"));
    std::unique_ptr<FakeOpenFile> file(new FakeOpenFile(binder));
    binder->m_file = file.get();
    ++binder->m_timesOpened;
    return file;
}

FakeOpenFile::FakeOpenFile(FakeBinder *binder)
    : m_binder(binder)
    , m_descriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
}

FakeOpenFile::~FakeOpenFile()
{
    ::close(m_descriptor);
    if (m_binder != nullptr && m_binder->m_file == this) {
        m_binder->m_file = nullptr;
        m_binder->m_registered.clear();
    }
    if (m_broken)
        return;
    if (!m_buffers.empty())
        FakeBinder::violation(QStringLiteral("%1 buffers were not freed").arg(m_buffers.size()));
    for (const Frame &frame : m_stack) {
        if (!frame.outgoing)
            FakeBinder::violation(
                QStringLiteral("call %1 was not answered").arg(frame.incoming.code));
    }
    if (!m_deliveredDeaths.empty())
        FakeBinder::violation(QStringLiteral("a death was not confirmed"));
    m_owed.reportLeft();
    m_handles.reportLeft();
}

int FakeOpenFile::control(unsigned long request, void *argument)
{
    if (m_binder != nullptr)
        ++m_binder->m_ioctlCount;
    if (m_broken || m_binder == nullptr)
        return -EBADF;
    switch (request) {
    case BINDER_VERSION:
        static_cast<binder_version *>(argument)->protocol_version =
            m_binder->quirks.protocolVersion;
        return 0;
    case BINDER_SET_MAX_THREADS:
        if (*static_cast<quint32 *>(argument) != 0)
            FakeBinder::violation(QStringLiteral("more threads were offered"));
        return 0;
    case BINDER_WRITE_READ: {
        const int result = writeRead(static_cast<binder_write_read *>(argument));
        updateReadiness();
        return result;
    }
    default:
        FakeBinder::violation(QStringLiteral("unexpected ioctl %1").arg(request, 0, 16));
        return -EINVAL;
    }
}

const void *FakeOpenFile::map(std::size_t size)
{
    if (m_binder->quirks.mapFails) {
        errno = ENOMEM;
        return nullptr;
    }
    m_binder->m_mappedSize = static_cast<int>(size);
    return &m_mapping; // each message has memory of its own, so that stale reads are found
}

void FakeOpenFile::breakDown()
{
    m_broken = true;
    ::eventfd_write(m_descriptor, 1);
}

bool FakeOpenFile::isIdle() const
{
    return m_threadWork.empty() && m_processWork.empty() && m_stack.empty();
}

int FakeOpenFile::writeRead(binder_write_read *exchange)
{
    m_handles.offerContextManager(m_binder->m_contextManager);
    m_calledJustNow = false;
    exchange->write_consumed +=
        write(pointer<char>(exchange->write_buffer + exchange->write_consumed),
              exchange->write_size - exchange->write_consumed);
    if (exchange->read_size == 0)
        return 0;
    if (m_calledJustNow) {
        ++m_binder->m_emptyReads;
        return -EAGAIN;
    }
    auto *buffer = reinterpret_cast<char *>(static_cast<std::uintptr_t>(exchange->read_buffer));
    return read(buffer, exchange->read_size, &exchange->read_consumed);
}

std::size_t FakeOpenFile::write(const char *bytes, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const bool blocked = std::any_of(m_threadWork.begin(), m_threadWork.end(),
                                         [](const Work &work) { return work.isError; });
        if (blocked || (m_binder->quirks.shortWrites && done > 0))
            break;
        const auto command = decode<quint32>(bytes + done);
        done += sizeof command;
        execute(command, bytes + done);
        done += _IOC_SIZE(command);
    }
    return done;
}

void FakeOpenFile::execute(quint32 command, const char *payload)
{
    switch (command) {
    case BC_ENTER_LOOPER:
        m_looping = true;
        break;
    case BC_TRANSACTION:
        onTransaction(decode<binder_transaction_data>(payload));
        break;
    case BC_REPLY:
        onReply(decode<binder_transaction_data>(payload));
        break;
    case BC_FREE_BUFFER:
        onFreeBuffer(decode<quint64>(payload));
        break;
    case BC_ACQUIRE:
        m_handles.add(decode<quint32>(payload), FakeHandles::Kind::Strong);
        break;
    case BC_RELEASE:
        m_handles.remove(decode<quint32>(payload), FakeHandles::Kind::Strong);
        break;
    case BC_INCREFS:
        m_handles.add(decode<quint32>(payload), FakeHandles::Kind::Weak);
        break;
    case BC_DECREFS:
        m_handles.remove(decode<quint32>(payload), FakeHandles::Kind::Weak);
        break;
    case BC_INCREFS_DONE:
    case BC_ACQUIRE_DONE: {
        const auto pair = decode<binder_ptr_cookie>(payload);
        m_owed.onGiven(command, pair.ptr, pair.cookie);
        break;
    }
    case BC_REQUEST_DEATH_NOTIFICATION: {
        const auto pair = decode<binder_handle_cookie>(payload);
        onRequestDeath(pair.handle, pair.cookie);
        break;
    }
    case BC_CLEAR_DEATH_NOTIFICATION: {
        const auto pair = decode<binder_handle_cookie>(payload);
        onClearDeath(pair.handle, pair.cookie);
        break;
    }
    case BC_DEAD_BINDER_DONE:
        onDeadBinderDone(decode<quint64>(payload));
        break;
    default:
        FakeBinder::violation(QStringLiteral("unknown command %1").arg(command, 0, 16));
    }
}

int FakeOpenFile::read(char *bytes, std::size_t size, quint64 *consumed)
{
    FakeBinder::Quirks &quirks = m_binder->quirks;
    if (quirks.interruptedReads > 0) {
        --quirks.interruptedReads;
        return -EINTR;
    }
    QByteArray returns = encode(BR_NOOP);
    if (quirks.loneNoops > 0) {
        --quirks.loneNoops;
    } else {
        const bool fromProcess = m_threadWork.empty() && m_stack.empty();
        std::deque<Work> &queue = fromProcess ? m_processWork : m_threadWork;
        if (queue.empty()) {
            ++m_binder->m_emptyReads;
            return -EAGAIN;
        }
        while (!queue.empty() && static_cast<std::size_t>(returns.size()) + 80 <= size) {
            const Work work = std::move(queue.front());
            queue.pop_front();
            returns.append(work.produce());
            if (work.endsRead)
                break;
        }
    }
    std::memcpy(bytes, returns.constData(), static_cast<std::size_t>(returns.size()));
    *consumed = static_cast<quint64>(returns.size());
    return 0;
}

void FakeOpenFile::updateReadiness()
{
    if (m_broken)
        return;
    const bool processWork = m_stack.empty() && !m_processWork.empty();
    const bool ready = !m_threadWork.empty() || processWork || m_binder->quirks.loneNoops > 0;
    if (ready) {
        ::eventfd_write(m_descriptor, 1);
    } else {
        eventfd_t value = 0;
        ::eventfd_read(m_descriptor, &value);
    }
}
