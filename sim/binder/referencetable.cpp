#include "binder/referencetable.h"

#include <algorithm>

namespace SimBinder {

Reference *ReferenceTable::find(std::uint32_t handle) const
{
    const auto found = m_byHandle.find(handle);
    return found == m_byHandle.end() ? nullptr : found->second.get();
}

Reference *ReferenceTable::find(const Node *node) const
{
    const auto found = m_byNode.find(node);
    return found == m_byNode.end() ? nullptr : found->second;
}

Reference *ReferenceTable::add(const std::shared_ptr<Node> &node, bool isContextManager)
{
    std::uint32_t handle = isContextManager ? 0 : 1;
    for (const auto &taken : m_byHandle) {
        if (taken.first > handle)
            break;
        handle = taken.first + 1;
    }
    auto reference = std::make_unique<Reference>();
    reference->holder = m_holder;
    reference->handle = handle;
    reference->node = node;
    Reference *added = reference.get();
    m_byNode.emplace(node.get(), added);
    m_byHandle.emplace(handle, std::move(reference));
    return added;
}

void ReferenceTable::remove(std::uint32_t handle)
{
    const auto found = m_byHandle.find(handle);
    if (found == m_byHandle.end())
        return;
    m_byNode.erase(found->second->node.get());
    m_byHandle.erase(found);
}

std::size_t ReferenceTable::watchedCount() const
{
    return static_cast<std::size_t>(
        std::count_if(m_byHandle.begin(), m_byHandle.end(),
                      [](const auto &entry) { return entry.second->death != nullptr; }));
}

Reference *ReferenceTable::first() const
{
    return m_byHandle.empty() ? nullptr : m_byHandle.begin()->second.get();
}

} // namespace SimBinder
