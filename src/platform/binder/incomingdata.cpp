#include "platform/binder/incomingdata.h"

#include "platform/binder/remoteobject.h"

#include <algorithm>
#include <cstring>

namespace Binder {

namespace {

// Scatter-gather objects, which we never send but may receive, are longer than the others.
std::size_t objectSize(quint32 type)
{
    switch (type) {
    case BINDER_TYPE_PTR:
        return sizeof(binder_buffer_object);
    case BINDER_TYPE_FDA:
        return sizeof(binder_fd_array_object);
    default:
        return sizeof(FlatObject);
    }
}

// A copy, because objects lie at multiples of four bytes and have fields of eight.
FlatObject flatObject(const char *bytes, quint64 position)
{
    FlatObject object;
    std::memcpy(&object, bytes + position, sizeof object);
    return object;
}

std::vector<quint64> wellFormed(const char *bytes, std::size_t size,
                                const std::vector<quint64> &positions)
{
    std::vector<quint64> objects;
    objects.reserve(std::min(positions.size(), size / sizeof(FlatObject)));
    quint64 free = 0;
    for (const quint64 position : positions) {
        if (position % 4 != 0 || position < free || position > size ||
            size - position < sizeof(FlatObject)) {
            continue;
        }
        objects.push_back(position);
        free = position + objectSize(flatObject(bytes, position).hdr.type);
    }
    return objects;
}

} // namespace

IncomingData::IncomingData(const char *bytes, std::size_t size, const std::vector<quint64> &objects,
                           std::unique_ptr<Source> source)
    : m_bytes(bytes)
    , m_size(size)
    , m_objects(wellFormed(bytes, size, objects))
    , m_source(std::move(source))
{
}

IncomingData::IncomingData(const QByteArray &bytes, const std::vector<quint64> &objects)
    : m_storage(bytes)
    , m_bytes(m_storage.constData())
    , m_size(static_cast<std::size_t>(m_storage.size()))
    , m_objects(wellFormed(m_bytes, m_size, objects))
{
}

IncomingData::~IncomingData()
{
    if (m_source != nullptr)
        m_source->release(*this);
}

bool IncomingData::touchesNoObject(std::size_t position, std::size_t size) const
{
    // the last object that begins before the range's end is the only one that can reach into it
    const auto behind = std::lower_bound(m_objects.begin(), m_objects.end(), position + size);
    if (behind == m_objects.begin())
        return true;
    const quint64 object = *(behind - 1);
    return object + objectSize(flatObject(m_bytes, object).hdr.type) <= position;
}

std::optional<FlatObject> IncomingData::objectAt(std::size_t position) const
{
    if (position > m_size || m_size - position < sizeof(FlatObject))
        return std::nullopt;
    const FlatObject object = flatObject(m_bytes, position);
    if (std::binary_search(m_objects.begin(), m_objects.end(), position))
        return object;
    if (object.hdr.type == BINDER_TYPE_BINDER && object.binder == 0 && object.cookie == 0 &&
        isPlain(position, sizeof(FlatObject))) {
        return object;
    }
    return std::nullopt;
}

std::shared_ptr<RemoteObject> IncomingData::remoteObject(Handle handle) const
{
    return m_source == nullptr ? nullptr : m_source->remoteObject(handle);
}

} // namespace Binder
