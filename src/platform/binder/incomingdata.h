#pragma once

#include "platform/binder/flatobject.h"
#include "platform/binder/types.h"

#include <QByteArray>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace Binder {

class RemoteObject;

/// The bytes of a received request or reply, and where in them binder objects lie.
///
/// The bytes were written by a process inside the container. What it says of object positions is
/// checked here once: positions that are unaligned, outside the message, out of order or inside
/// another object do not count as objects.
class IncomingData
{
public:
    /// What a message received through a driver comes from.
    class Source
    {
    public:
        Source() = default;
        virtual ~Source() = default;
        Source(const Source &) = delete;
        Source &operator=(const Source &) = delete;

        virtual std::shared_ptr<RemoteObject> remoteObject(Handle handle) = 0;

        /// The message is deleted: its bytes are not read any more after this.
        virtual void release(const IncomingData &data) = 0;
    };

    /// A message in the driver's buffer; `bytes` stays readable until it is released.
    IncomingData(const char *bytes, std::size_t size, const std::vector<quint64> &objects,
                 std::unique_ptr<Source> source);

    /// A message that came through no driver. The objects of other processes in it cannot be
    /// told apart and read as failures.
    explicit IncomingData(const QByteArray &bytes, const std::vector<quint64> &objects = {});
    ~IncomingData();
    IncomingData(const IncomingData &) = delete;
    IncomingData &operator=(const IncomingData &) = delete;

    const char *bytes() const { return m_bytes; }
    std::size_t size() const { return m_size; }
    const std::vector<quint64> &objects() const { return m_objects; }

    /// Whether `size` bytes from `position` on lie in the message and touch no object.
    bool isPlain(std::size_t position, std::size_t size) const
    {
        if (position > m_size || size > m_size - position)
            return false;
        return m_objects.empty() || touchesNoObject(position, size);
    }

    /// The object at `position`, if there is one or the null object.
    std::optional<FlatObject> objectAt(std::size_t position) const;

    std::shared_ptr<RemoteObject> remoteObject(Handle handle) const;

private:
    bool touchesNoObject(std::size_t position, std::size_t size) const;

    QByteArray m_storage;
    const char *m_bytes;
    std::size_t m_size;
    std::vector<quint64> m_objects;
    std::unique_ptr<Source> m_source;
};

} // namespace Binder
