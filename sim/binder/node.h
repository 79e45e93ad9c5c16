#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>

namespace SimBinder {

class Client;
struct Reference;
struct Transaction;

enum class Strength { Weak, Strong };

/// Who holds a node: the references of other open files, or its owner's own open file (a buffer
/// that it has not freed, an announcement that it has not answered).
enum class Holder { Reference, Owner };

/// An object that an open file has handed out (struct binder_node): its two numbers, its counts
/// and the one-way calls that wait for their turn.
///
/// The owner is told when the first holder comes (BR_INCREFS, BR_ACQUIRE) and when the last has
/// gone (BR_RELEASE, BR_DECREFS). To be told is work in the owner's queue, and what is said is
/// decided when the work is read: changes that cancelled out in between say nothing.
class Node : public std::enable_shared_from_this<Node>
{
public:
    /// What the owner is to be told, in this order.
    struct Announcement
    {
        bool incRefs = false;
        bool acquire = false;
        bool release = false;
        bool decRefs = false;
    };

    Node(Client *owner, std::uint64_t id, std::uint64_t cookie, std::uint32_t flags);

    /// The node of a context manager: held from the start, so that it is never announced.
    static std::shared_ptr<Node> forContextManager(Client *owner, std::uint64_t id,
                                                   std::uint64_t cookie, std::uint32_t flags);

    Client *owner() const { return m_owner; } ///< null when the node is dead
    std::uint64_t id() const { return m_id; }
    std::uint64_t cookie() const { return m_cookie; }
    bool acceptsFiles() const { return m_acceptsFiles; }

    /// Adds a holder. `sender` is the owner when it is just sending the object: the announcement
    /// then precedes the completion of that message. Without it a first holder cannot come, since
    /// nobody would tell the owner; false then.
    bool hold(Strength strength, Holder holder, Client *sender = nullptr);

    /// Takes a holder away; the last one's leaving is announced to the owner.
    void letGo(Strength strength, Holder holder);

    /// The owner reads the announcement. Both numbers are forgotten with the last holder.
    Announcement announce();

    /// The owner's BC_INCREFS_DONE or BC_ACQUIRE_DONE. False when none was due.
    bool answerAnnouncement(Strength strength);

    void setAnnouncementQueued(bool queued) { m_announcementQueued = queued; }
    bool isAnnouncementQueued() const { return m_announcementQueued; }

    void addReference(Reference *reference) { m_references.insert(reference); }
    void removeReference(Reference *reference);

    /// The owner is gone. Returns the references that were left.
    const std::set<Reference *> &die();

    /// One-way calls of a node are delivered one at a time: true when this one may be, else it
    /// waits for takeNextOneWay().
    bool admitOneWay(const std::shared_ptr<Transaction> &transaction);

    /// The buffer of the one-way call that was delivered last is free. The next one, or null.
    std::shared_ptr<Transaction> takeNextOneWay();

private:
    bool isHeldStrongly() const { return m_referencesStrong + m_ownerStrong > 0; }
    bool isHeld() const { return isHeldStrongly() || m_ownerWeak > 0 || !m_references.empty(); }

    Client *m_owner;
    std::uint64_t m_id;
    std::uint64_t m_cookie;
    bool m_acceptsFiles;
    bool m_isContextManager = false;

    std::size_t m_referencesStrong = 0;
    std::size_t m_ownerStrong = 0;
    std::size_t m_ownerWeak = 0;
    bool m_announcedStrong = false;
    bool m_announcedWeak = false;
    bool m_answerDueStrong = false;
    bool m_answerDueWeak = false;
    bool m_announcementQueued = false;

    std::set<Reference *> m_references;
    std::deque<std::shared_ptr<Transaction>> m_waitingOneWay;
    bool m_oneWayInProgress = false;
};

} // namespace SimBinder
