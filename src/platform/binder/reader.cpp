#include "platform/binder/reader.h"

#include "platform/binder/flatobject.h"
#include "platform/binder/incomingdata.h"

#include <cstring>

namespace Binder {

namespace {

template <typename Value>
bool readPlain(const IncomingData &data, std::size_t *position, Value *value)
{
    if (!data.isPlain(*position, sizeof *value))
        return false;
    std::memcpy(value, data.bytes() + *position, sizeof *value);
    *position += sizeof *value;
    return true;
}

// A length, `unitSize` bytes for each unit it counts, and `terminator` bytes more. The null item
// gives a null pointer.
bool readCounted(const IncomingData &data, std::size_t *position, std::size_t unitSize,
                 std::size_t terminator, const char **bytes, int *count)
{
    std::size_t next = *position;
    qint32 length = 0;
    if (!readPlain(data, &next, &length) || length < NullLength)
        return false;
    if (length == NullLength) {
        *bytes = nullptr;
        *count = 0;
    } else {
        const std::size_t size = padded(static_cast<std::size_t>(length) * unitSize + terminator);
        if (!data.isPlain(next, size))
            return false;
        *bytes = data.bytes() + next;
        *count = length;
        next += size;
    }
    *position = next;
    return true;
}

} // namespace

Reader::Reader(const IncomingData *data, std::size_t position)
    : m_data(data)
    , m_position(position)
{
}

bool Reader::atEnd() const
{
    return bytesRemaining() == 0;
}

std::size_t Reader::bytesRemaining() const
{
    return m_position < m_data->size() ? m_data->size() - m_position : 0;
}

bool Reader::readInt32(qint32 *value)
{
    return readPlain(*m_data, &m_position, value);
}

bool Reader::readInt64(qint64 *value)
{
    return readPlain(*m_data, &m_position, value);
}

bool Reader::readBool(bool *value)
{
    qint32 word = 0;
    if (!readInt32(&word))
        return false;
    *value = word != 0;
    return true;
}

bool Reader::readDouble(double *value)
{
    return readPlain(*m_data, &m_position, value);
}

bool Reader::readString16(const char16_t **units, int *length)
{
    const char *bytes = nullptr;
    if (!readCounted(*m_data, &m_position, sizeof **units, sizeof **units, &bytes, length))
        return false;
    *units = reinterpret_cast<const char16_t *>(bytes);
    return true;
}

bool Reader::readByteArray(const char **bytes, int *size)
{
    return readCounted(*m_data, &m_position, 1, 0, bytes, size);
}

bool Reader::readNullableObject(std::shared_ptr<RemoteObject> *object)
{
    const std::optional<FlatObject> flat = m_data->objectAt(m_position);
    if (!flat)
        return false;

    std::shared_ptr<RemoteObject> remote;
    if (flat->hdr.type == BINDER_TYPE_HANDLE) {
        remote = m_data->remoteObject(flat->handle);
        if (remote == nullptr)
            return false;
    } else if (flat->hdr.type != BINDER_TYPE_BINDER) {
        return false;
    }
    *object = std::move(remote);
    m_position += sizeof *flat;
    return true;
}

} // namespace Binder
