#pragma once

#include "platform/binder/localobject.h"

#include <QByteArray>

#include <memory>
#include <unordered_map>

namespace Binder {

/// The objects of this process that can be called, by their number. A number that is not in the
/// table is that of an object that was dropped while the runtime could still call it.
class LocalObjectTable
{
public:
    struct Entry
    {
        QByteArray descriptor;
        IncomingCall call;
    };

    /// Returns the new object's number.
    quint64 add(const QByteArray &descriptor, IncomingCall call);
    void drop(quint64 id);

    /// Null for an object that was dropped. The entry outlives a drop while it is held.
    std::shared_ptr<const Entry> find(quint64 id) const;

private:
    std::unordered_map<quint64, std::shared_ptr<const Entry>> m_entries;
};

} // namespace Binder
