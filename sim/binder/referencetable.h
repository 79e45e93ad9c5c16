#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>

namespace SimBinder {

class Client;
class Node;
struct Death;

/// What one open file holds of another one's node (struct binder_ref).
struct Reference
{
    Client *holder = nullptr;
    std::uint32_t handle = 0;
    std::shared_ptr<Node> node;
    std::size_t strong = 0;
    std::size_t weak = 0;
    std::shared_ptr<Death> death; ///< null: no death notification is requested
};

/// The handles of one open file: one per node, and a new one gets the lowest free number, where 0
/// is kept for the context manager's node.
class ReferenceTable
{
public:
    explicit ReferenceTable(Client *holder)
        : m_holder(holder)
    {
    }

    Reference *find(std::uint32_t handle) const;
    Reference *find(const Node *node) const;

    /// A reference without any counts yet. The table has none to this node so far.
    Reference *add(const std::shared_ptr<Node> &node, bool isContextManager);

    void remove(std::uint32_t handle);

    std::size_t size() const { return m_byHandle.size(); }

    /// Of how many the death is to be told.
    std::size_t watchedCount() const;

    /// Any one of them, or null when there is none.
    Reference *first() const;

private:
    Client *m_holder;
    std::map<std::uint32_t, std::unique_ptr<Reference>> m_byHandle;
    std::unordered_map<const Node *, Reference *> m_byNode;
};

} // namespace SimBinder
