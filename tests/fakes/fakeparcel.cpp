#include "fakes/fakeparcel.h"

#include <linux/android/binder.h>

namespace {

template <typename Value>
QByteArray bytesOf(Value value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

} // namespace

FakeParcel &FakeParcel::int32(qint32 value)
{
    return raw(bytesOf(value));
}

FakeParcel &FakeParcel::int64(qint64 value)
{
    return raw(bytesOf(value));
}

FakeParcel &FakeParcel::float64(double value)
{
    return raw(bytesOf(value));
}

FakeParcel &FakeParcel::string16(const QString &text)
{
    if (text.isNull())
        return int32(-1);
    int32(text.size());
    raw(QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2));
    raw(QByteArray(2, '\0'));
    return raw(QByteArray(m_data.size() % 4, '\0'));
}

FakeParcel &FakeParcel::byteArray(const QByteArray &bytes)
{
    int32(bytes.size());
    raw(bytes);
    return raw(QByteArray((4 - bytes.size() % 4) % 4, '\0'));
}

FakeParcel &FakeParcel::raw(const QByteArray &bytes)
{
    m_data.append(bytes);
    return *this;
}

FakeParcel &FakeParcel::token(const QString &descriptor, const std::vector<qint32> &words)
{
    for (const qint32 word : words)
        int32(word);
    return string16(descriptor);
}

FakeParcel &FakeParcel::object(const std::shared_ptr<FakeObject> &object)
{
    m_objects[static_cast<std::size_t>(m_data.size())] = object;
    listObjectAt(static_cast<quint64>(m_data.size()));
    return flatObject(BINDER_TYPE_HANDLE, 0, 0); // its handle is known on delivery
}

FakeParcel &FakeParcel::ownObject(quint64 id)
{
    listObjectAt(static_cast<quint64>(m_data.size()));
    return flatObject(BINDER_TYPE_BINDER, id, id);
}

FakeParcel &FakeParcel::nullObject()
{
    return flatObject(BINDER_TYPE_BINDER, 0, 0);
}

FakeParcel &FakeParcel::fileDescriptor(int descriptor)
{
    listObjectAt(static_cast<quint64>(m_data.size()));
    return flatObject(BINDER_TYPE_FD, static_cast<quint64>(descriptor), 0);
}

FakeParcel &FakeParcel::listObjectAt(quint64 position)
{
    m_offsets.push_back(position);
    return *this;
}

FakeParcel &FakeParcel::flatObject(quint32 type, quint64 binder, quint64 cookie)
{
    flat_binder_object object = {};
    object.hdr.type = type;
    object.flags = 0x17f;
    object.binder = binder;
    object.cookie = cookie;
    return raw(bytesOf(object));
}
