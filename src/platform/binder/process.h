#pragma once

#include "platform/binder/callstack.h"
#include "platform/binder/channel.h"
#include "platform/binder/deathtable.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/localobjecttable.h"
#include "platform/binder/replyqueue.h"
#include "platform/binder/types.h"

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>
#include <unordered_map>

struct binder_transaction_data;
class QSocketNotifier;

namespace Binder {

class NameKeeper;
class NameWatch;
class OutgoingData;
class OutgoingReply;
class RemoteObject;
class ReturnStream;

/// This process as a binder device sees it: one open file, with the remote objects that it refers
/// to, its own objects and the calls under way in both directions.
///
/// Everything that names the same device shares one Process, and holds it; the file is closed
/// when the last holder is gone, but never while one of its functions runs.
class Process : public std::enable_shared_from_this<Process>
{
public:
    /// Null, with one debug line, when the device cannot be used.
    static std::shared_ptr<Process> open(const char *device);
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    /// Sends a request; `flags` are FlagOneWay or 0. Without FlagOneWay it blocks for the answer:
    /// with StatusOk, `reply` is set.
    Status transact(Handle target, quint32 code, quint32 flags, const OutgoingData &request,
                    std::unique_ptr<IncomingData> *reply = nullptr);

    /// The one object with this handle. The handle must be valid at this moment: received in a
    /// message that is not deleted yet, or that of the context manager.
    std::shared_ptr<RemoteObject> remoteObject(Handle handle);

    /// For RemoteObject.
    void releaseRemoteObject(Handle handle);
    HandlerId addDeathHandler(Handle handle, std::function<void()> handler);
    void removeDeathHandler(HandlerId id) { m_deaths.remove(id); }

    /// For LocalObject.
    quint64 addLocalObject(const QByteArray &descriptor, IncomingCall call);
    void dropLocalObject(quint64 id);

    NameWatch &nameWatch() { return *m_nameWatch; }
    NameKeeper &nameKeeper() { return *m_nameKeeper; }

    /// Runs `function`, which may release everything, as the outermost call from the event loop.
    void runFromEventLoop(const std::function<void()> &function);

    bool isLost() const { return m_channel->isLost(); }

private:
    class ReceivedMessage;

    explicit Process(std::unique_ptr<Channel> channel);

    void onReadable();
    bool hasMoreToRead();
    void waitForReturns();
    void readOnce();
    void dispatch(ReturnStream &returns);
    void onReply(const binder_transaction_data &transaction);
    void onTransaction(const binder_transaction_data &transaction);
    std::unique_ptr<OutgoingReply> serve(std::unique_ptr<IncomingData> data, quint64 target,
                                         quint32 code, quint32 flags, Status *status);
    std::unique_ptr<IncomingData> receive(const binder_transaction_data &transaction);

    void flush();
    void flushWhenIdle();
    void onLost();
    void onRefused(Handle target);

    std::unique_ptr<Channel> m_channel;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QObject m_context; // what is posted to the event loop ends with this object
    CallStack m_calls;
    ReplyQueue m_replies;
    LocalObjectTable m_localObjects;
    std::unordered_map<Handle, std::weak_ptr<RemoteObject>> m_remoteObjects;
    DeathTable m_deaths;
    std::unique_ptr<NameWatch> m_nameWatch;
    std::unique_ptr<NameKeeper> m_nameKeeper;
    int m_busy = 0;    // calls of this class's own on the stack that will write what is queued
    int m_serving = 0; // incoming calls on the stack
};

} // namespace Binder
