#include "runtime/binderloop.h"

#include <QLoggingCategory>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <linux/android/binder.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcBinderLoop, "sim.runtime.binder")

namespace SimRuntime {

namespace {

// What Android processes map (ProcessState.cpp): a megabyte without two guard pages.
constexpr std::size_t MappingSize = std::size_t(254) * 4096;
constexpr std::size_t ReadSize = 256;

template <typename Pointer>
quint64 address(const Pointer *pointer)
{
    return quint64(reinterpret_cast<quintptr>(pointer));
}

// The driver gives addresses within the mapping as numbers.
template <typename Item>
const Item *at(binder_uintptr_t number)
{
    return reinterpret_cast<const Item *>( // NOLINT(performance-no-int-to-ptr)
        quintptr(number));
}

Parcel copyOf(const binder_transaction_data &transaction)
{
    Parcel parcel;
    parcel.data = QByteArray(at<char>(transaction.data.ptr.buffer), int(transaction.data_size));
    const auto *offsets = at<quint64>(transaction.data.ptr.offsets);
    for (quint64 i = 0; i < transaction.offsets_size / sizeof(quint64); ++i)
        parcel.objects.append(offsets[i]);
    return parcel;
}

// Nobody here takes descriptors; those that arrive (dump, shell command) belong to this process.
void closeDescriptors(const Parcel &parcel)
{
    for (const quint64 position : parcel.objects) {
        flat_binder_object object{};
        if (position + sizeof object > quint64(parcel.data.size()))
            continue;
        memcpy(&object, parcel.data.constData() + position, sizeof object);
        if (object.hdr.type == BINDER_TYPE_FD)
            ::close(int(object.handle));
    }
}

binder_handle_cookie handleAndCookie(quint32 handle, quint64 cookie)
{
    binder_handle_cookie pair{};
    pair.handle = handle;
    pair.cookie = cookie;
    return pair;
}

} // namespace

BinderLoop::BinderLoop(std::unique_ptr<Binder::Driver> driver, QObject *parent)
    : QObject(parent)
    , m_driver(std::move(driver))
{
}

BinderLoop::~BinderLoop()
{
    m_notifier.reset(); // before the descriptor goes
    if (m_lost)
        return;
    // Whoever still waits for an answer learns from the closing that there is none.
    for (const quint64 buffer : qAsConst(m_unanswered))
        appendCommand(&m_toWrite, BC_FREE_BUFFER, buffer);
    binder_write_read exchange{};
    exchange.write_size = quint64(m_toWrite.size());
    exchange.write_buffer = address(m_toWrite.constData());
    m_driver->control(BINDER_WRITE_READ, &exchange);
}

bool BinderLoop::start()
{
    binder_version version{};
    int error = m_driver->control(BINDER_VERSION, &version);
    if (error != 0 || version.protocol_version != BINDER_CURRENT_PROTOCOL_VERSION) {
        qCCritical(lcBinderLoop) << "Not a 64-bit binder device:" << strerror(-error)
                                 << version.protocol_version;
        return false;
    }
    quint32 moreThreads = 0;
    error = m_driver->control(BINDER_SET_MAX_THREADS, &moreThreads);
    if (error != 0 || m_driver->map(MappingSize) == nullptr) {
        qCCritical(lcBinderLoop) << "Cannot map the binder device:" << strerror(errno);
        return false;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_driver->descriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &BinderLoop::pump);
    appendCommand(&m_toWrite, BC_ENTER_LOOPER);
    schedulePump();
    return true;
}

bool BinderLoop::becomeContextManager(BinderObject *object)
{
    quint32 unused = 0;
    const int error = m_driver->control(BINDER_SET_CONTEXT_MGR, &unused);
    if (error != 0) {
        qCCritical(lcBinderLoop) << "Cannot become the service manager:" << strerror(-error);
        return false;
    }
    m_objects.insert(0, object);
    return true;
}

quint64 BinderLoop::publish(BinderObject *object)
{
    m_objects.insert(++m_lastNumber, object);
    return m_lastNumber;
}

void BinderLoop::acquire(quint32 handle)
{
    if (m_acquired[handle]++ == 0) {
        appendCommand(&m_toWrite, BC_ACQUIRE, handle);
        schedulePump();
    }
}

void BinderLoop::release(quint32 handle)
{
    const auto held = m_acquired.find(handle);
    if (held == m_acquired.end() || --held.value() > 0)
        return;
    m_acquired.erase(held);
    appendCommand(&m_toWrite, BC_RELEASE, handle);
    schedulePump();
}

quint64 BinderLoop::watch(quint32 handle, const std::function<void()> &onDeath)
{
    DeathWatch &watch = m_watches[handle];
    if (watch.cookie == 0) { // the driver takes one request per handle
        watch.cookie = ++m_lastNumber;
        appendCommand(&m_toWrite, BC_REQUEST_DEATH_NOTIFICATION,
                      handleAndCookie(handle, watch.cookie));
        schedulePump();
    }
    watch.handlers.insert(++m_lastNumber, onDeath);
    return m_lastNumber;
}

void BinderLoop::unwatch(quint64 watch)
{
    for (auto it = m_watches.begin(); it != m_watches.end(); ++it) {
        if (it->handlers.remove(watch) == 0)
            continue;
        if (it->handlers.isEmpty()) {
            appendCommand(&m_toWrite, BC_CLEAR_DEATH_NOTIFICATION,
                          handleAndCookie(it.key(), it->cookie));
            m_watches.erase(it);
            schedulePump();
        }
        return;
    }
}

void BinderLoop::send(quint32 handle, quint32 code, const Parcel &request, CallMode mode,
                      const Completion &completion)
{
    if (mode == CallMode::OneWay) {
        writeTransaction(BC_TRANSACTION, handle, code, TF_ONE_WAY, request);
        m_sent.enqueue(completion);
    } else {
        Q_ASSERT(!m_twoWay);
        writeTransaction(BC_TRANSACTION, handle, code, 0, request);
        m_sent.enqueue({});
        m_twoWay = completion;
    }
    schedulePump();
}

void BinderLoop::answer(const Answer &answer)
{
    if (m_unanswered.isEmpty())
        return;
    if (answer.status != StatusOk) {
        Parcel status;
        status.data.append(reinterpret_cast<const char *>(&answer.status), sizeof answer.status);
        writeTransaction(BC_REPLY, 0, 0, TF_STATUS_CODE, status);
    } else {
        writeTransaction(BC_REPLY, 0, 0, 0, answer.parcel);
    }
    m_sent.enqueue({});
    appendCommand(&m_toWrite, BC_FREE_BUFFER, m_unanswered.takeLast());
    schedulePump();
}

void BinderLoop::writeTransaction(quint32 command, quint32 target, quint32 code, quint32 flags,
                                  const Parcel &parcel)
{
    m_beingWritten.append(std::make_shared<Parcel>(parcel));
    const Parcel &kept = *m_beingWritten.constLast();
    binder_transaction_data transaction{};
    transaction.target.handle = target;
    transaction.code = code;
    transaction.flags = flags;
    transaction.data_size = quint64(kept.data.size());
    transaction.offsets_size = quint64(kept.objects.size()) * sizeof(quint64);
    transaction.data.ptr.buffer = address(kept.data.constData());
    transaction.data.ptr.offsets = address(kept.objects.constData());
    appendCommand(&m_toWrite, command, transaction);
}

void BinderLoop::schedulePump()
{
    if (m_pumpScheduled || m_lost)
        return;
    m_pumpScheduled = true;
    QMetaObject::invokeMethod(this, &BinderLoop::pump, Qt::QueuedConnection);
}

void BinderLoop::pump()
{
    m_pumpScheduled = true; // what is written meanwhile goes out with the next exchange
    while (exchange()) {
    }
    m_pumpScheduled = false;
}

bool BinderLoop::exchange()
{
    QByteArray received(int(ReadSize), Qt::Uninitialized);
    binder_write_read exchange{};
    exchange.write_size = quint64(m_toWrite.size());
    exchange.write_buffer = address(m_toWrite.constData());
    exchange.read_size = quint64(received.size());
    exchange.read_buffer = address(received.data());
    const int error = m_driver->control(BINDER_WRITE_READ, &exchange);

    m_toWrite.remove(0, int(exchange.write_consumed));
    if (m_toWrite.isEmpty())
        m_beingWritten.clear();
    received.truncate(int(exchange.read_consumed));
    const auto commands = splitReturns(received);
    for (const DriverReturn &command : commands)
        handle(command);

    if (error == 0 || error == -EINTR)
        return true;
    if (error == -EAGAIN)
        return !m_toWrite.isEmpty();
    qCCritical(lcBinderLoop) << "The binder device is lost:" << strerror(-error);
    m_notifier->setEnabled(false);
    m_lost = true;
    Q_EMIT lost();
    return false;
}

void BinderLoop::handle(const DriverReturn &command)
{
    switch (command.code) {
    case BR_TRANSACTION:
        handleTransaction(payloadAs<binder_transaction_data>(command));
        break;
    case BR_REPLY:
        handleReply(payloadAs<binder_transaction_data>(command));
        break;
    case BR_TRANSACTION_COMPLETE:
        handleSent(StatusOk);
        break;
    case BR_DEAD_REPLY:
        handleSent(StatusDeadObject);
        break;
    case BR_FAILED_REPLY:
    case BR_FROZEN_REPLY:
        handleSent(StatusFailedTransaction);
        break;
    case BR_INCREFS:
        appendCommand(&m_toWrite, BC_INCREFS_DONE, payloadAs<binder_ptr_cookie>(command));
        break;
    case BR_ACQUIRE:
        appendCommand(&m_toWrite, BC_ACQUIRE_DONE, payloadAs<binder_ptr_cookie>(command));
        break;
    case BR_DEAD_BINDER:
        handleDeath(payloadAs<binder_uintptr_t>(command));
        break;
    default: // no-ops, and counts of objects that live as long as this file anyway
        break;
    }
}

void BinderLoop::handleTransaction(const binder_transaction_data &transaction)
{
    IncomingCall call;
    call.code = transaction.code;
    call.oneWay = (transaction.flags & TF_ONE_WAY) != 0;
    call.pid = transaction.sender_pid;
    call.uid = transaction.sender_euid;
    call.parcel = copyOf(transaction);

    if (!call.oneWay)
        m_unanswered.append(transaction.data.ptr.buffer);
    BinderObject *object = m_objects.value(transaction.target.ptr);
    std::optional<Answer> result = Answer{StatusDeadObject, {}};
    if (object != nullptr)
        result = object->transact(call);
    closeDescriptors(call.parcel);
    if (call.oneWay)
        appendCommand(&m_toWrite, BC_FREE_BUFFER, transaction.data.ptr.buffer);
    else if (result)
        answer(*result);
}

void BinderLoop::handleReply(const binder_transaction_data &transaction)
{
    const Parcel reply = copyOf(transaction);
    if ((transaction.flags & TF_STATUS_CODE) != 0) {
        qint32 status = StatusFailedTransaction;
        if (reply.data.size() >= int(sizeof status))
            memcpy(&status, reply.data.constData(), sizeof status);
        finishTwoWay(status, {});
    } else {
        finishTwoWay(StatusOk, reply);
        closeDescriptors(reply);
    }
    appendCommand(&m_toWrite, BC_FREE_BUFFER, transaction.data.ptr.buffer);
}

// Confirmations come in the order in which the messages were written; an error stands in place of
// one. An error when none is due is the end of the two-way call that had been confirmed before.
void BinderLoop::handleSent(qint32 status)
{
    if (m_sent.isEmpty()) {
        finishTwoWay(status, {});
        return;
    }
    const Completion completion = m_sent.dequeue();
    if (completion)
        completion(status, {});
    else if (status != StatusOk)
        finishTwoWay(status, {});
}

void BinderLoop::finishTwoWay(qint32 status, const Parcel &reply)
{
    const Completion completion = std::exchange(m_twoWay, {});
    if (completion)
        completion(status, reply);
}

void BinderLoop::handleDeath(quint64 cookie)
{
    appendCommand(&m_toWrite, BC_DEAD_BINDER_DONE, cookie);
    for (auto it = m_watches.begin(); it != m_watches.end(); ++it) {
        if (it->cookie != cookie)
            continue;
        appendCommand(&m_toWrite, BC_CLEAR_DEATH_NOTIFICATION, handleAndCookie(it.key(), cookie));
        const auto handlers = it->handlers;
        m_watches.erase(it);
        for (const auto &handler : handlers)
            handler();
        return;
    }
}

} // namespace SimRuntime
