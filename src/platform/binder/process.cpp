#include "platform/binder/process.h"

#include "platform/binder/address.h"
#include "platform/binder/counted.h"
#include "platform/binder/drivercategory.h"
#include "platform/binder/message.h"
#include "platform/binder/namekeeper.h"
#include "platform/binder/namewatch.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/returnstream.h"
#include "platform/binder/standardtransaction.h"
#include "platform/binder/transactiondata.h"

#include <QCoreApplication>
#include <QHash>
#include <QSocketNotifier>

#include <cstdint>
#include <linux/android/binder.h>
#include <unistd.h>
#include <vector>

namespace Binder {

namespace {

// Enough for the longest return; what does not fit comes with the next read.
constexpr std::size_t ReadSize = 256;

// After so many reads the event loop has its turn, whatever the runtime keeps sending.
constexpr int MaxReadsPerWakeUp = 64;

// The runtime decides how often it calls back into a call; the stack must not be its to exhaust.
constexpr int MaxNestedCalls = 16;

// Newer than the kernel headers we build with: in place of BR_TRANSACTION_COMPLETE, when the
// target of a one-way call is frozen and will be called later.
constexpr quint32 BrTransactionPendingFrozen = _IO('r', 20);

template <typename Item>
const Item *pointer(quint64 address)
{
    // the driver's interface has addresses as numbers
    return reinterpret_cast<const Item *>( // NOLINT(performance-no-int-to-ptr)
        static_cast<std::uintptr_t>(address));
}

} // namespace

/// A buffer of the driver's mapping, to be given back exactly once.
class Process::ReceivedMessage : public IncomingData::Source
{
public:
    ReceivedMessage(std::shared_ptr<Process> process, quint64 buffer)
        : m_process(std::move(process))
        , m_buffer(buffer)
    {
    }

    std::shared_ptr<RemoteObject> remoteObject(Handle handle) override
    {
        return m_process->remoteObject(handle);
    }

    void release(const IncomingData &data) override
    {
        // Descriptors that came with the message are ours from its delivery on. Nothing that we
        // serve takes any.
        for (const quint64 position : data.objects()) {
            const std::optional<FlatObject> object = data.objectAt(position);
            if (object->hdr.type == BINDER_TYPE_FD)
                ::close(static_cast<int>(object->handle));
        }
        m_process->m_channel->queue(BC_FREE_BUFFER, m_buffer);
        m_process->flushWhenIdle();
    }

private:
    std::shared_ptr<Process> m_process;
    quint64 m_buffer;
};

std::shared_ptr<Process> Process::open(const char *device)
{
    static QHash<QByteArray, std::weak_ptr<Process>> processes;

    const QByteArray path(device);
    std::shared_ptr<Process> process = processes.value(path).lock();
    if (process != nullptr && !process->isLost())
        return process;

    std::unique_ptr<Channel> channel = Channel::open(path);
    if (channel == nullptr)
        return nullptr;
    process.reset(new Process(std::move(channel)));
    processes[path] = process;
    return process;
}

Process::Process(std::unique_ptr<Channel> channel)
    : m_channel(std::move(channel))
    , m_notifier(std::make_unique<QSocketNotifier>(m_channel->descriptor(), QSocketNotifier::Read))
    , m_replies(*m_channel)
    , m_deaths(*m_channel,
               [this] {
                   QMetaObject::invokeMethod(
                       &m_context, [this] { runFromEventLoop([this] { m_deaths.runDue(); }); },
                       Qt::QueuedConnection);
               })
    , m_nameWatch(std::make_unique<NameWatch>(*this))
    , m_nameKeeper(std::make_unique<NameKeeper>(*this))
{
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_context,
                     [this] { runFromEventLoop([this] { onReadable(); }); });
}

Process::~Process() = default;

void Process::runFromEventLoop(const std::function<void()> &function)
{
    std::shared_ptr<Process> self = shared_from_this();
    function();
    // The event that brought us here came from a notifier or timer of ours, which must outlive it.
    if (self.use_count() == 1) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [self = std::move(self)] {}, Qt::QueuedConnection);
    }
}

Status Process::transact(Handle target, quint32 code, quint32 flags, const OutgoingData &request,
                         std::unique_ptr<IncomingData> *reply)
{
    const std::shared_ptr<Process> self = shared_from_this();
    if (!request.isComplete()) {
        qCWarning(lcBinderDriver) << "Request" << code << "is too large to be sent";
        return StatusFailedTransaction;
    }

    binder_transaction_data transaction = {};
    transaction.target.handle = target;
    transaction.code = code;
    transaction.flags = flags;
    describe(request, &transaction);

    OutgoingCall call;
    call.oneWay = (flags & FlagOneWay) != 0;
    const bool lostBefore = m_channel->isLost();
    m_channel->queue(BC_TRANSACTION, transaction);
    call.commandEnd = m_channel->bytesQueued();
    m_calls.begin(&call);
    {
        const Counted busy(&m_busy);
        bool isAnsweredAtOnce = call.oneWay;
        while (!call.done && !m_channel->isLost()) {
            if (!isAnsweredAtOnce && m_replies.isEmpty())
                waitForReturns();
            isAnsweredAtOnce = false;
            readOnce();
        }
    }
    m_calls.end(&call);
    if (!call.done) {
        onLost();
        call.status = StatusDeadObject;
        call.refused = lostBefore || call.commandEnd > m_channel->bytesTaken();
    }
    if (call.status == StatusFailedTransaction && !call.confirmed) {
        qCWarning(lcBinderDriver) << "The driver did not take request" << code << "of"
                                  << request.size() << "bytes to object" << target;
    }
    // A call from within a served one can be refused for the end of a mere thread.
    if (call.refused && m_serving == 0)
        onRefused(target);
    flushWhenIdle();
    if (reply != nullptr)
        *reply = std::move(call.reply);
    return call.status;
}

void Process::onRefused(Handle target)
{
    const auto known = m_remoteObjects.find(target);
    if (known == m_remoteObjects.end())
        return;
    if (const std::shared_ptr<RemoteObject> object = known->second.lock())
        object->onRefused();
}

std::shared_ptr<RemoteObject> Process::remoteObject(Handle handle)
{
    std::weak_ptr<RemoteObject> &known = m_remoteObjects[handle];
    std::shared_ptr<RemoteObject> object = known.lock();
    if (object == nullptr) {
        m_channel->queue(BC_ACQUIRE, handle);
        object = std::make_shared<RemoteObject>(shared_from_this(), handle);
        known = object;
        flushWhenIdle();
    }
    return object;
}

void Process::releaseRemoteObject(Handle handle)
{
    m_remoteObjects.erase(handle);
    m_deaths.forget(handle);
    m_channel->queue(BC_RELEASE, handle);
    flushWhenIdle();
}

HandlerId Process::addDeathHandler(Handle handle, std::function<void()> handler)
{
    const HandlerId id = m_deaths.add(handle, std::move(handler));
    flushWhenIdle();
    return id;
}

quint64 Process::addLocalObject(const QByteArray &descriptor, IncomingCall call)
{
    return m_localObjects.add(descriptor, std::move(call));
}

void Process::dropLocalObject(quint64 id)
{
    m_localObjects.drop(id);
    m_nameKeeper->forgetObject(id);
}

void Process::waitForReturns()
{
    flush();
    if (!m_channel->hasCommands())
        m_channel->wait();
}

void Process::onReadable()
{
    {
        const Counted busy(&m_busy);
        int reads = 0;
        do {
            readOnce();
        } while (++reads < MaxReadsPerWakeUp && hasMoreToRead());
    }
    flushWhenIdle();
}

// A reply goes with the next read, which follows at once and finds at least the driver's word that
// it took the reply. Each read ends with a call or an answer, so nothing is served in between. For
// what else is queued there may be nothing to read.
bool Process::hasMoreToRead()
{
    if (!m_replies.isEmpty())
        return true;
    flush();
    return m_channel->hasCommands() || m_channel->isReadable();
}

void Process::readOnce()
{
    char buffer[ReadSize];
    const std::size_t size = m_channel->exchange(buffer, sizeof buffer);
    if (m_channel->isLost()) {
        onLost();
        return;
    }
    m_calls.onTaken(m_channel->bytesTaken());
    m_replies.dropTaken();
    ReturnStream returns(buffer, size);
    dispatch(returns);
}

void Process::dispatch(ReturnStream &returns)
{
    while (returns.next()) {
        switch (returns.code()) {
        case BR_INCREFS:
            m_channel->queue(BC_INCREFS_DONE, returns.payload<binder_ptr_cookie>());
            break;
        case BR_ACQUIRE:
            m_channel->queue(BC_ACQUIRE_DONE, returns.payload<binder_ptr_cookie>());
            break;
        case BR_TRANSACTION:
        case BR_TRANSACTION_SEC_CTX: // begins with the same structure
            onTransaction(returns.payload<binder_transaction_data>());
            break;
        case BR_REPLY:
            onReply(returns.payload<binder_transaction_data>());
            break;
        case BR_TRANSACTION_COMPLETE:
        case BR_ONEWAY_SPAM_SUSPECT:
        case BrTransactionPendingFrozen:
            m_calls.onCompleted();
            break;
        case BR_DEAD_REPLY:
            m_calls.onDead();
            break;
        case BR_FAILED_REPLY:
        case BR_FROZEN_REPLY:
        case BR_ERROR:
            m_calls.onAnswered(StatusFailedTransaction, nullptr);
            break;
        case BR_DEAD_BINDER:
            m_deaths.onDead(returns.payload<binder_uintptr_t>());
            break;
        default:
            // Released references to our objects need no answer: their numbers are not used
            // again. The rest is not meant for a single thread, or is only there to be read.
            break;
        }
    }
}

void Process::onReply(const binder_transaction_data &transaction)
{
    std::unique_ptr<IncomingData> data = receive(transaction);
    Status status = StatusOk;
    if ((transaction.flags & TF_STATUS_CODE) != 0 && !Reader(data.get()).readInt32(&status)) {
        status = StatusFailedTransaction;
    }
    if (status != StatusOk)
        data.reset();
    m_calls.onAnswered(status, std::move(data));
}

void Process::onTransaction(const binder_transaction_data &transaction)
{
    std::unique_ptr<IncomingData> data = receive(transaction);
    Status status = StatusOk;
    std::unique_ptr<OutgoingReply> reply = serve(std::move(data), transaction.target.ptr,
                                                 transaction.code, transaction.flags, &status);
    if ((transaction.flags & FlagOneWay) == 0) {
        m_replies.add(std::move(reply), status);
        m_calls.replySent();
    }
}

std::unique_ptr<OutgoingReply> Process::serve(std::unique_ptr<IncomingData> data, quint64 target,
                                              quint32 code, quint32 flags, Status *status)
{
    const std::shared_ptr<const LocalObjectTable::Entry> object = m_localObjects.find(target);
    if (object == nullptr) {
        *status = StatusDeadObject;
        return nullptr;
    }
    auto standardReply = std::make_unique<OutgoingReply>(std::make_unique<OutgoingData>());
    if (answerStandardTransaction(code, object->descriptor.constData(), standardReply->writer()))
        return standardReply;

    if (m_serving >= MaxNestedCalls) {
        qCWarning(lcBinderDriver) << "Call" << code << "to" << object->descriptor
                                  << "is nested too deeply";
        *status = StatusFailedTransaction;
        return nullptr;
    }
    const Counted serving(&m_serving);
    IncomingRequest request(std::move(data), object->descriptor);
    return object->call(request, code, flags, status);
}

std::unique_ptr<IncomingData> Process::receive(const binder_transaction_data &transaction)
{
    const auto *objects = pointer<binder_size_t>(transaction.data.ptr.offsets);
    const std::size_t objectCount = transaction.offsets_size / sizeof(binder_size_t);
    auto source =
        std::make_unique<ReceivedMessage>(shared_from_this(), transaction.data.ptr.buffer);
    return std::make_unique<IncomingData>(
        pointer<char>(transaction.data.ptr.buffer), transaction.data_size,
        std::vector<quint64>(objects, objects + objectCount), std::move(source));
}

void Process::flush()
{
    m_channel->flush();
    m_replies.dropTaken();
}

void Process::flushWhenIdle()
{
    if (m_busy == 0)
        flush();
}

void Process::onLost()
{
    if (!m_notifier->isEnabled())
        return;
    m_notifier->setEnabled(false);
    m_nameWatch->stop();
    m_nameKeeper->stop();
    m_deaths.onAllDead();
}

} // namespace Binder
