#include "binder/binderparcel.h"

#include "binder/logging.h"
#include "platform/binder/message.h"

namespace {

// Every item of a message takes at least one word.
constexpr std::size_t SmallestItem = 4;

} // namespace

BinderParcel::BinderParcel(Binder::OutgoingRequest &request)
    : m_writer(request.writer())
{
}

BinderParcel::BinderParcel(const Binder::IncomingRequest &request)
    : m_reader(request.reader())
{
}

BinderParcel::BinderParcel(Binder::OutgoingReply &reply)
    : m_writer(reply.writer())
{
}

BinderParcel::BinderParcel(const Binder::IncomingReply &reply)
    : m_reader(reply.reader())
{
}

BinderParcel::BinderParcel(const Binder::Writer &writer)
    : m_writer(writer)
{
}

BinderParcel::BinderParcel(const Binder::Reader &reader)
    : m_reader(reader)
{
}

void BinderParcel::writeInt32(int value)
{
    if (m_writer)
        m_writer->appendInt32(value);
}

void BinderParcel::writeInt64(qlonglong value)
{
    if (m_writer)
        m_writer->appendInt64(value);
}

void BinderParcel::writeBool(bool value)
{
    if (m_writer)
        m_writer->appendBool(value);
}

void BinderParcel::writeDouble(double value)
{
    if (m_writer)
        m_writer->appendDouble(value);
}

void BinderParcel::writeString(const QString &value)
{
    if (!m_writer)
        return;
    if (value.isNull())
        m_writer->appendString16(static_cast<const char16_t *>(nullptr), 0);
    else
        m_writer->appendString16(reinterpret_cast<const char16_t *>(value.utf16()), value.size());
}

void BinderParcel::writeStringList(const QStringList &values)
{
    writeInt32(values.size());
    for (const QString &value : values)
        writeString(value);
}

void BinderParcel::writeByteArray(const QByteArray &value)
{
    if (m_writer)
        m_writer->appendByteArray(value);
}

void BinderParcel::writeLocalObject(const Binder::LocalObject *object)
{
    if (m_writer)
        m_writer->appendLocalObject(object);
}

int BinderParcel::readInt32()
{
    qint32 value = -1;
    if (canRead() && !m_reader->readInt32(&value) && mayComplain())
        qCCritical(parcelLog) << "Couldn't read result";
    return value;
}

qlonglong BinderParcel::readInt64()
{
    qint64 value = -1;
    if (canRead())
        m_reader->readInt64(&value);
    return value;
}

bool BinderParcel::readBool()
{
    bool value = false;
    if (canRead())
        m_reader->readBool(&value);
    return value;
}

double BinderParcel::readDouble()
{
    double value = -1.0;
    if (canRead())
        m_reader->readDouble(&value);
    return value;
}

QString BinderParcel::readString()
{
    const char16_t *units = nullptr;
    int length = 0;
    if (!canRead() || !m_reader->readString16(&units, &length) || units == nullptr)
        return QString();
    return QString(reinterpret_cast<const QChar *>(units), length);
}

QStringList BinderParcel::readStringList()
{
    QStringList values;
    const int count = readInt32();
    if (count < 1 || !canHold(count))
        return values;
    for (int i = 0; i < count; ++i) {
        const std::size_t before = bytesRemaining();
        values.append(readString());
        // What cannot be read now cannot be read the next million times either.
        if (bytesRemaining() == before)
            break;
    }
    return values;
}

QByteArray BinderParcel::readByteArray()
{
    QByteArray value;
    const char *bytes = nullptr;
    int size = 0;
    if (!canRead())
        return value;
    if (m_reader->readByteArray(&bytes, &size) && bytes != nullptr)
        value.append(bytes, size);
    qCDebug(parcelLog) << "ByteArray size read: " << value.size();
    return value;
}

std::shared_ptr<Binder::RemoteObject> BinderParcel::readNullableObject()
{
    std::shared_ptr<Binder::RemoteObject> object;
    if (canRead())
        m_reader->readNullableObject(&object);
    return object;
}

bool BinderParcel::canHold(int count)
{
    if (static_cast<std::size_t>(count) <= bytesRemaining() / SmallestItem)
        return true;
    if (mayComplain())
        qCCritical(parcelLog) << "Count is larger than the message:" << count;
    return false;
}

bool BinderParcel::mayComplain()
{
    if (m_complaints > MaxComplaints)
        return false;
    if (m_complaints++ < MaxComplaints)
        return true;
    qCWarning(parcelLog) << "More is wrong with this message, which is not logged";
    return false;
}
