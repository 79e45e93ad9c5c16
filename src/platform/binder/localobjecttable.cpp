#include "platform/binder/localobjecttable.h"

#include "platform/binder/uniquenumber.h"

#include <utility>

namespace Binder {

quint64 LocalObjectTable::add(const QByteArray &descriptor, IncomingCall call)
{
    const quint64 id = uniqueNumber();
    m_entries[id] = std::make_shared<const Entry>(Entry{descriptor, std::move(call)});
    return id;
}

void LocalObjectTable::drop(quint64 id)
{
    m_entries.erase(id);
}

std::shared_ptr<const LocalObjectTable::Entry> LocalObjectTable::find(quint64 id) const
{
    const auto entry = m_entries.find(id);
    return entry == m_entries.end() ? nullptr : entry->second;
}

} // namespace Binder
