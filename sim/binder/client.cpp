#include "binder/client.h"

#include "binder/calls.h"
#include "binder/context.h"
#include "binder/death.h"

#include <linux/android/binder.h>

namespace SimBinder {

namespace {

// More objects or handles than any program has; only there to bound what one can make us keep.
constexpr std::size_t MaxNodes = 65536;
constexpr std::size_t MaxReferences = 65536;

} // namespace

Client::Client(Context &context, pid_t pid, uid_t euid)
    : m_context(context)
    , m_pid(pid)
    , m_euid(euid)
    , m_references(this)
    , m_deaths(*this)
{
}

// The order is the kernel's: first the calls end, then the objects die, then the references go.
Client::~Client()
{
    m_context.forgetContextManager(*this);
    abandonCalls();
    abandonWork(&m_threadWork);
    killNodes();
    while (Reference *reference = m_references.first())
        drop(*reference);
    abandonWork(&m_processWork);
}

Books Client::books() const
{
    Books books;
    books.pid = m_pid;
    books.nodes = m_nodes.size();
    books.references = m_references.size();
    books.deaths = m_references.watchedCount();
    books.buffers = m_area.deliveredCount();
    return books;
}

bool Client::isIdle() const
{
    return m_isLooper && m_innermostCall == nullptr && m_threadWork.empty();
}

bool Client::hasWork() const
{
    return m_threadIsWoken || (isIdle() && !m_processWork.empty());
}

std::optional<Work> Client::takeWork(bool idle)
{
    WorkList *works = &m_threadWork;
    if (works->empty() && idle)
        works = &m_processWork;
    if (works->empty())
        return std::nullopt;
    Work work = std::move(works->front());
    works->pop_front();
    if (m_threadWork.empty())
        m_threadIsWoken = false;
    if (const auto *announcement = std::get_if<AnnouncementWork>(&work))
        announcement->node->setAnnouncementQueued(false);
    return work;
}

void Client::queueForThread(Work work)
{
    m_threadWork.push_back(std::move(work));
    m_threadIsWoken = true;
}

void Client::queueForThreadQuietly(Work work)
{
    m_threadWork.push_back(std::move(work));
}

void Client::queueForProcess(Work work)
{
    m_processWork.push_back(std::move(work));
}

void Client::queueAnnouncement(Node &node, Wake wake)
{
    withdrawAnnouncement(node);
    node.setAnnouncementQueued(true);
    if (wake == Wake::WithNextWork)
        queueForThreadQuietly(AnnouncementWork{node.shared_from_this()});
    else
        queueForProcess(AnnouncementWork{node.shared_from_this()});
}

template <typename Matches>
void Client::withdraw(Matches matches)
{
    m_threadWork.remove_if(matches);
    m_processWork.remove_if(matches);
    // What woke the thread can be read already, and this was all that was left behind it.
    if (m_threadWork.empty())
        m_threadIsWoken = false;
}

void Client::withdrawAnnouncement(Node &node)
{
    if (!node.isAnnouncementQueued())
        return;
    node.setAnnouncementQueued(false);
    const auto isOfNode = [&node](const Work &work) {
        const auto *announcement = std::get_if<AnnouncementWork>(&work);
        return announcement != nullptr && announcement->node.get() == &node;
    };
    withdraw(isOfNode);
}

void Client::withdrawDeath(const Death *death)
{
    const auto isOfDeath = [death](const Work &work) {
        const auto *notice = std::get_if<DeathWork>(&work);
        return notice != nullptr && notice->death.get() == death;
    };
    withdraw(isOfDeath);
}

void Client::stopWriting(std::uint32_t code)
{
    m_isWritingStopped = true;
    queueForThread(ReturnWork{code, true});
}

void Client::freeBuffer(const Buffer &buffer)
{
    if (buffer.isOneWay && buffer.target != nullptr) {
        if (std::shared_ptr<Transaction> next = buffer.target->takeNextOneWay())
            queueForProcess(MessageWork{std::move(next)});
    }
    discardBuffer(buffer);
}

void Client::discardBuffer(const Buffer &buffer)
{
    const std::shared_ptr<Node> target = buffer.target;
    const std::vector<HeldObject> objects = buffer.objects;
    m_area.release(buffer);
    if (target != nullptr)
        target->letGo(Strength::Strong, Holder::Owner);
    for (const HeldObject &object : objects) {
        const Strength strength = object.isStrong ? Strength::Strong : Strength::Weak;
        if (object.isOwn) {
            object.node->letGo(strength, Holder::Owner);
            continue;
        }
        // A program can have given back, by mistake, a reference that only this buffer held.
        Reference *reference = m_references.find(object.node.get());
        if (reference == nullptr || !letGo(*reference, strength))
            m_context.misuse().report(m_pid, "BC_FREE_BUFFER of a buffer whose reference is gone");
    }
}

std::shared_ptr<Node> Client::findNode(std::uint64_t id) const
{
    const auto found = m_nodes.find(id);
    return found == m_nodes.end() ? nullptr : found->second;
}

std::shared_ptr<Node> Client::addNode(const flat_binder_object &object)
{
    if (m_nodes.size() >= MaxNodes)
        return nullptr;
    auto node = std::make_shared<Node>(this, object.binder, object.cookie, object.flags);
    addNode(node);
    return node;
}

void Client::addNode(const std::shared_ptr<Node> &node)
{
    m_nodes.emplace(node->id(), node);
}

void Client::forgetNode(Node &node)
{
    // cppcheck-suppress unreadVariable // it lives until the end
    const std::shared_ptr<Node> forgotten = node.shared_from_this();
    withdrawAnnouncement(node);
    m_nodes.erase(node.id());
}

Reference *Client::holdNode(const std::shared_ptr<Node> &node, Strength strength, Client *sender)
{
    Reference *reference = m_references.find(node.get());
    if (reference == nullptr) {
        if (m_references.size() >= MaxReferences)
            return nullptr;
        reference = m_references.add(node, node == m_context.contextManager());
        node->addReference(reference);
    }
    if (hold(*reference, strength, sender))
        return reference;
    if (reference->strong == 0 && reference->weak == 0)
        drop(*reference);
    return nullptr;
}

bool Client::hold(Reference &reference, Strength strength, Client *sender)
{
    std::size_t &count = strength == Strength::Strong ? reference.strong : reference.weak;
    if (count == 0 && !reference.node->hold(strength, Holder::Reference, sender))
        return false;
    ++count;
    return true;
}

bool Client::letGo(Reference &reference, Strength strength)
{
    std::size_t &count = strength == Strength::Strong ? reference.strong : reference.weak;
    if (count == 0)
        return false;
    --count;
    if (strength == Strength::Strong && count == 0)
        reference.node->letGo(Strength::Strong, Holder::Reference);
    if (reference.strong == 0 && reference.weak == 0)
        drop(reference);
    return true;
}

void Client::drop(Reference &reference)
{
    const std::shared_ptr<Node> node = reference.node;
    m_deaths.forget(reference);
    if (reference.strong > 0)
        node->letGo(Strength::Strong, Holder::Reference);
    node->removeReference(&reference);
    m_references.remove(reference.handle);
}

void Client::abandonCalls()
{
    const std::shared_ptr<Transaction> innermost = std::move(m_innermostCall);
    const bool isServing = innermost != nullptr && innermost->to == this;
    // The callers of outer calls learn of it when the inner ones end: so does the kernel.
    std::shared_ptr<Transaction> call = innermost;
    while (call != nullptr) {
        if (call->to == this) {
            call->to = nullptr;
            call = call->calleesOuter;
        } else {
            call->from = nullptr;
            call = call->callersOuter;
        }
    }
    if (isServing)
        failCall(innermost, BR_DEAD_REPLY);
}

void Client::abandonWork(WorkList *works)
{
    const WorkList abandoned = std::move(*works);
    works->clear();
    for (const Work &work : abandoned) {
        const auto *message = std::get_if<MessageWork>(&work);
        if (message != nullptr && message->transaction->expectsReply)
            failCall(message->transaction, BR_DEAD_REPLY);
    }
}

void Client::killNodes()
{
    const std::map<std::uint64_t, std::shared_ptr<Node>> nodes = std::move(m_nodes);
    m_nodes.clear();
    for (const auto &entry : nodes) {
        for (Reference *reference : entry.second->die())
            reference->holder->deaths().nodeDied(*reference);
    }
}

} // namespace SimBinder
