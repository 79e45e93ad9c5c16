#include "platform/binder/writer.h"

#include "platform/binder/localobject.h"
#include "platform/binder/outgoingdata.h"

#include <QString>

#include <cstring>

namespace Binder {

namespace {

template <typename Value>
void appendPlain(OutgoingData *data, Value value)
{
    if (char *place = data->extend(sizeof value))
        std::memcpy(place, &value, sizeof value);
}

// The length and what it counts go in together or not at all.
void appendCounted(OutgoingData *data, qint32 count, const void *bytes, std::size_t size,
                   std::size_t terminator)
{
    if (char *place = data->extend(sizeof count + size + terminator)) {
        std::memcpy(place, &count, sizeof count);
        if (size > 0)
            std::memcpy(place + sizeof count, bytes, size);
    }
}

} // namespace

void Writer::appendInt32(qint32 value)
{
    appendPlain(m_data, value);
}

void Writer::appendInt64(qint64 value)
{
    appendPlain(m_data, value);
}

void Writer::appendBool(bool value)
{
    appendInt32(value ? 1 : 0);
}

void Writer::appendDouble(double value)
{
    appendPlain(m_data, value);
}

void Writer::appendString16(const char *utf8)
{
    if (utf8 == nullptr) {
        appendInt32(NullLength);
        return;
    }
    const QString text = QString::fromUtf8(utf8);
    appendString16(reinterpret_cast<const char16_t *>(text.utf16()), text.size());
}

void Writer::appendString16(const char16_t *units, int length)
{
    if (units == nullptr || length < 0) {
        appendInt32(NullLength);
        return;
    }
    appendCounted(m_data, length, units, static_cast<std::size_t>(length) * sizeof *units,
                  sizeof *units);
}

void Writer::appendByteArray(const QByteArray &bytes)
{
    appendCounted(m_data, bytes.size(), bytes.constData(), static_cast<std::size_t>(bytes.size()),
                  0);
}

void Writer::appendLocalObject(const LocalObject *object)
{
    m_data->appendObject(object == nullptr ? 0 : object->id());
}

std::size_t Writer::bytesWritten() const
{
    return m_data->size();
}

void Writer::overwriteInt32(std::size_t position, qint32 value)
{
    m_data->overwriteInt32(position, value);
}

} // namespace Binder
