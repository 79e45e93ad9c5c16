#include "platform/binder/outgoingdata.h"

#include "platform/binder/flatobject.h"

#include <cstring>

namespace Binder {

char *OutgoingData::extend(std::size_t size)
{
    const std::size_t used = this->size();
    if (!m_complete || size > MaxSize || padded(size) > MaxSize - used) {
        m_complete = false;
        return nullptr;
    }
    m_bytes.append(static_cast<int>(padded(size)), '\0');
    return m_bytes.data() + used;
}

void OutgoingData::appendObject(quint64 id)
{
    FlatObject object = {};
    object.hdr.type = BINDER_TYPE_BINDER;
    object.flags = ObjectFlags;
    object.binder = id;
    object.cookie = id;

    const std::size_t position = size();
    if (char *place = extend(sizeof object)) {
        std::memcpy(place, &object, sizeof object);
        if (id != 0)
            m_objects.push_back(position);
    }
}

void OutgoingData::overwriteInt32(std::size_t position, qint32 value)
{
    if (position > size() || size() - position < sizeof value)
        return;
    std::memcpy(m_bytes.data() + position, &value, sizeof value);
}

} // namespace Binder
