#include "binder/node.h"

#include "binder/client.h"

#include <linux/android/binder.h>

namespace SimBinder {

Node::Node(Client *owner, std::uint64_t id, std::uint64_t cookie, std::uint32_t flags)
    : m_owner(owner)
    , m_id(id)
    , m_cookie(cookie)
    , m_acceptsFiles((flags & FLAT_BINDER_FLAG_ACCEPTS_FDS) != 0)
{
}

std::shared_ptr<Node> Node::forContextManager(Client *owner, std::uint64_t id, std::uint64_t cookie,
                                              std::uint32_t flags)
{
    auto node = std::make_shared<Node>(owner, id, cookie, flags);
    node->m_isContextManager = true;
    node->m_ownerStrong = 1;
    node->m_ownerWeak = 1;
    node->m_announcedStrong = true;
    node->m_announcedWeak = true;
    return node;
}

bool Node::hold(Strength strength, Holder holder, Client *sender)
{
    if (strength == Strength::Strong) {
        if (holder == Holder::Reference) {
            const bool knownHeld = m_isContextManager && m_owner != nullptr && m_announcedStrong;
            if (sender == nullptr && m_referencesStrong == 0 && !knownHeld)
                return false;
            ++m_referencesStrong;
        } else {
            ++m_ownerStrong;
        }
        // Moved behind what the sender's queue holds, so that it comes with this very message.
        if (!m_announcedStrong && sender != nullptr)
            sender->queueAnnouncement(*this, Client::Wake::WithNextWork);
        return true;
    }

    if (holder == Holder::Owner)
        ++m_ownerWeak;
    if (m_announcedWeak || m_announcementQueued)
        return true;
    if (sender == nullptr)
        return false;
    sender->queueAnnouncement(*this, Client::Wake::WithNextWork);
    return true;
}

void Node::letGo(Strength strength, Holder holder)
{
    if (strength == Strength::Strong) {
        --(holder == Holder::Reference ? m_referencesStrong : m_ownerStrong);
        if (isHeldStrongly())
            return;
    } else {
        if (holder == Holder::Owner)
            --m_ownerWeak;
        if (m_ownerWeak > 0 || !m_references.empty())
            return;
    }
    if (m_owner == nullptr)
        return;
    if (m_announcedStrong || m_announcedWeak) {
        if (!m_announcementQueued)
            m_owner->queueAnnouncement(*this, Client::Wake::WhenIdle);
    } else if (!isHeld()) {
        m_owner->forgetNode(*this);
    }
}

Node::Announcement Node::announce()
{
    const bool strong = isHeldStrongly();
    const bool weak = isHeld();
    Announcement announcement;
    announcement.incRefs = weak && !m_announcedWeak;
    announcement.acquire = strong && !m_announcedStrong;
    announcement.release = !strong && m_announcedStrong;
    announcement.decRefs = !weak && m_announcedWeak;

    m_announcedWeak = weak;
    m_announcedStrong = strong;
    // Until the owner has answered, it is itself a holder: the object cannot go away meanwhile.
    if (announcement.incRefs) {
        m_answerDueWeak = true;
        ++m_ownerWeak;
    }
    if (announcement.acquire) {
        m_answerDueStrong = true;
        ++m_ownerStrong;
    }
    if (!weak && !strong && m_owner != nullptr)
        m_owner->forgetNode(*this);
    return announcement;
}

bool Node::answerAnnouncement(Strength strength)
{
    bool &due = strength == Strength::Strong ? m_answerDueStrong : m_answerDueWeak;
    if (!due)
        return false;
    due = false;
    letGo(strength, Holder::Owner);
    return true;
}

void Node::removeReference(Reference *reference)
{
    m_references.erase(reference);
    letGo(Strength::Weak, Holder::Reference);
}

const std::set<Reference *> &Node::die()
{
    m_owner = nullptr;
    m_ownerStrong = 0;
    m_ownerWeak = 0;
    m_waitingOneWay.clear();
    return m_references;
}

bool Node::admitOneWay(const std::shared_ptr<Transaction> &transaction)
{
    if (!m_oneWayInProgress) {
        m_oneWayInProgress = true;
        return true;
    }
    m_waitingOneWay.push_back(transaction);
    return false;
}

std::shared_ptr<Transaction> Node::takeNextOneWay()
{
    if (m_waitingOneWay.empty()) {
        m_oneWayInProgress = false;
        return nullptr;
    }
    std::shared_ptr<Transaction> next = m_waitingOneWay.front();
    m_waitingOneWay.pop_front();
    return next;
}

} // namespace SimBinder
