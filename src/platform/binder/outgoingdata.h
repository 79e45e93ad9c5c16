#pragma once

#include <QByteArray>

#include <cstddef>
#include <vector>

namespace Binder {

/// The bytes of an outgoing request or reply, and where in them binder objects lie.
///
/// Objects of this process are carried by their number, which is never used for another object;
/// one that is deleted before the message is sent dangles nowhere.
class OutgoingData
{
public:
    /// The driver maps at most this much for a receiver, so nothing longer can be delivered
    /// (Linux, drivers/android/binder_alloc.c).
    static constexpr std::size_t MaxSize = std::size_t(4) * 1024 * 1024;

    /// Extends the message by `size` bytes, rounded up to a multiple of four and zeroed, which
    /// the caller then fills. Null when the message would become too long; from then on nothing
    /// is appended any more and isComplete() is false.
    char *extend(std::size_t size);

    /// Appends a reference to the object of this process that has this number; 0 is the null
    /// object.
    void appendObject(quint64 id);

    /// Replaces four bytes; a position beyond the end changes nothing.
    void overwriteInt32(std::size_t position, qint32 value);

    std::size_t size() const { return static_cast<std::size_t>(m_bytes.size()); }
    const QByteArray &bytes() const { return m_bytes; }

    /// Positions of the objects, ascending; null objects are not among them.
    const std::vector<quint64> &objects() const { return m_objects; }

    /// False when something was left out because the message would have become too long.
    bool isComplete() const { return m_complete; }

private:
    QByteArray m_bytes;
    std::vector<quint64> m_objects;
    bool m_complete = true;
};

} // namespace Binder
