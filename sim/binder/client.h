#pragma once

#include "binder/books.h"
#include "binder/deathnotices.h"
#include "binder/node.h"
#include "binder/receivearea.h"
#include "binder/referencetable.h"
#include "binder/work.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <sys/types.h>

struct flat_binder_object;

namespace SimBinder {

class Context;

/// One open file of the device, used by one thread (struct binder_proc and its binder_thread).
///
/// Work lies in two queues. The thread's holds what concerns the calls it is in: completions,
/// failures, replies, calls nested in its own, the first announcements of objects it has just
/// sent. The process's holds everything else: unrelated calls, one-way calls, holders that have
/// gone, deaths. It is read only while the thread is idle: in no call, and nothing in its own
/// queue.
class Client
{
public:
    Client(Context &context, pid_t pid, uid_t euid);
    ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    Context &context() const { return m_context; }
    pid_t pid() const { return m_pid; }
    uid_t euid() const { return m_euid; }
    Books books() const;

    /// BC_ENTER_LOOPER: only such a thread is given process work.
    bool isLooper() const { return m_isLooper; }
    void setLooper(bool looper) { m_isLooper = looper; }

    // Work

    /// Whether the descriptor polls readable.
    bool hasWork() const;

    /// Whether this thread is idle, so that a read takes process work as well.
    bool isIdle() const;

    /// The next work, which is removed; of the process too when `idle`.
    std::optional<Work> takeWork(bool idle);

    void queueForThread(Work work);
    void queueForProcess(Work work);

    /// Queued for the thread, but no reason to wake it: read together with what follows.
    void queueForThreadQuietly(Work work);

    enum class Wake { WithNextWork, WhenIdle };
    void queueAnnouncement(Node &node, Wake wake);

    void withdrawDeath(const Death *death);
    std::size_t threadWorkCount() const { return m_threadWork.size(); }

    /// A BC_TRANSACTION or BC_REPLY failed: no further command is consumed until `code` is read.
    void stopWriting(std::uint32_t code);
    bool isWritingStopped() const { return m_isWritingStopped; }
    void resumeWriting() { m_isWritingStopped = false; }

    // Calls

    /// The innermost call that this thread makes or serves, or null.
    const std::shared_ptr<Transaction> &innermostCall() const { return m_innermostCall; }
    void setInnermostCall(std::shared_ptr<Transaction> call) { m_innermostCall = std::move(call); }

    ReceiveArea &area() { return m_area; }

    /// Frees a received message and lets go of what it held; after a one-way call the node's next
    /// one may come.
    void freeBuffer(const Buffer &buffer);

    /// The same for a message that could not be sent after all.
    void discardBuffer(const Buffer &buffer);

    // Objects

    std::shared_ptr<Node> findNode(std::uint64_t id) const;

    /// A new node for an object that is sent for the first time. Null beyond any sane number.
    std::shared_ptr<Node> addNode(const flat_binder_object &object);
    void addNode(const std::shared_ptr<Node> &node);
    void forgetNode(Node &node);

    ReferenceTable &references() { return m_references; }
    DeathNotices &deaths() { return m_deaths; }

    /// Adds a count to this file's reference to the node, which is made if there is none. Null on
    /// failure. `sender` as in Node::hold().
    Reference *holdNode(const std::shared_ptr<Node> &node, Strength strength, Client *sender);

    /// Adds or takes a count. False, and nothing changed, when that cannot be.
    bool hold(Reference &reference, Strength strength, Client *sender = nullptr);
    bool letGo(Reference &reference, Strength strength);

private:
    template <typename Matches>
    void withdraw(Matches matches);
    void withdrawAnnouncement(Node &node);
    void drop(Reference &reference);
    void abandonCalls();
    void abandonWork(WorkList *works);
    void killNodes();

    Context &m_context;
    pid_t m_pid;
    uid_t m_euid;
    bool m_isLooper = false;

    WorkList m_threadWork;
    WorkList m_processWork;
    bool m_threadIsWoken = false; // the thread's queue holds more than quiet work
    bool m_isWritingStopped = false;
    std::shared_ptr<Transaction> m_innermostCall;

    ReceiveArea m_area;
    std::map<std::uint64_t, std::shared_ptr<Node>> m_nodes; // by id
    ReferenceTable m_references;
    DeathNotices m_deaths;
};

} // namespace SimBinder
