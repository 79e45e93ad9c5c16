#include "runtime/parcelwriter.h"

#include <QtEndian>

#include <linux/android/binder.h>

namespace SimRuntime {

namespace {

// What Android's Parcel::flattenBinder writes: lowest priority 0x13, descriptors accepted.
constexpr quint32 ObjectFlags = 0x113;

template <typename Number>
void appendNumber(QByteArray *data, Number value)
{
    const Number ordered = qToLittleEndian(value);
    data->append(reinterpret_cast<const char *>(&ordered), int(sizeof ordered));
}

} // namespace

void ParcelWriter::int32(qint32 value)
{
    appendNumber(&m_parcel.data, value);
}

void ParcelWriter::int64(qint64 value)
{
    appendNumber(&m_parcel.data, value);
}

void ParcelWriter::boolean(bool value)
{
    int32(value ? 1 : 0);
}

void ParcelWriter::string16(const QString &text)
{
    if (text.isNull()) {
        int32(-1);
        return;
    }
    int32(text.size());
    for (const QChar unit : text)
        appendNumber(&m_parcel.data, unit.unicode());
    appendNumber(&m_parcel.data, quint16(0));
    pad();
}

void ParcelWriter::byteArray(const QByteArray &bytes)
{
    if (bytes.isNull()) {
        int32(-1);
        return;
    }
    int32(bytes.size());
    m_parcel.data.append(bytes);
    pad();
}

void ParcelWriter::localObject(quint64 id)
{
    m_parcel.objects.append(quint64(m_parcel.data.size()));
    object(BINDER_TYPE_BINDER, id, id);
}

void ParcelWriter::remoteObject(quint32 handle)
{
    m_parcel.objects.append(quint64(m_parcel.data.size()));
    object(BINDER_TYPE_HANDLE, handle, 0);
}

void ParcelWriter::nullObject()
{
    // Not listed: there is nothing for the driver to translate.
    object(BINDER_TYPE_BINDER, 0, 0);
}

void ParcelWriter::file(int descriptor)
{
    m_parcel.objects.append(quint64(m_parcel.data.size()));
    object(BINDER_TYPE_FD, quint32(descriptor), 0);
}

void ParcelWriter::append(const Parcel &parcel)
{
    for (const quint64 position : parcel.objects)
        m_parcel.objects.append(quint64(m_parcel.data.size()) + position);
    m_parcel.data.append(parcel.data);
}

void ParcelWriter::raw(const QByteArray &bytes)
{
    m_parcel.data.append(bytes);
}

void ParcelWriter::pad()
{
    while (m_parcel.data.size() % 4 != 0)
        m_parcel.data.append('\0');
}

void ParcelWriter::object(quint32 type, quint64 binder, quint64 cookie)
{
    appendNumber(&m_parcel.data, type);
    appendNumber(&m_parcel.data, ObjectFlags);
    appendNumber(&m_parcel.data, binder);
    appendNumber(&m_parcel.data, cookie);
}

} // namespace SimRuntime
