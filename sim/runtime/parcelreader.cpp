#include "runtime/parcelreader.h"

#include <QtEndian>

#include <algorithm>
#include <linux/android/binder.h>

namespace SimRuntime {

namespace {

constexpr int ObjectSize = sizeof(flat_binder_object);
static_assert(ObjectSize == 24, "64-bit binder objects without a stability word");

} // namespace

ParcelReader::ParcelReader(const Parcel &parcel)
    : m_parcel(parcel)
{
}

void ParcelReader::fail(const QString &problem)
{
    if (m_problem.isNull())
        m_problem = problem;
}

bool ParcelReader::crossesObject(int size) const
{
    return std::any_of(m_parcel.objects.cbegin(), m_parcel.objects.cend(), [&](quint64 start) {
        return start < quint64(m_position) + quint64(size) &&
               start + quint64(ObjectSize) > quint64(m_position);
    });
}

const char *ParcelReader::take(int size, const char *what)
{
    if (failed())
        return nullptr;
    if (size > remaining()) {
        fail(QStringLiteral("%1 at byte %2 is cut short").arg(QLatin1String(what)).arg(m_position));
        return nullptr;
    }
    if (crossesObject(size)) {
        fail(QStringLiteral("%1 at byte %2 lies on an object")
                 .arg(QLatin1String(what))
                 .arg(m_position));
        return nullptr;
    }
    const char *start = m_parcel.data.constData() + m_position;
    m_position += size;
    return start;
}

bool ParcelReader::takePadding(int size)
{
    const int padding = (4 - size % 4) % 4;
    const char *bytes = take(padding, "padding");
    if (bytes == nullptr)
        return false;
    if (std::any_of(bytes, bytes + padding, [](char byte) { return byte != 0; })) {
        fail(QStringLiteral("padding before byte %1 is not zero").arg(m_position));
        return false;
    }
    return true;
}

qint32 ParcelReader::int32()
{
    const char *bytes = take(4, "int32");
    return bytes == nullptr ? 0 : qFromLittleEndian<qint32>(bytes);
}

qint64 ParcelReader::int64()
{
    const char *bytes = take(8, "int64");
    return bytes == nullptr ? 0 : qFromLittleEndian<qint64>(bytes);
}

QString ParcelReader::string16()
{
    const qint32 length = int32();
    if (failed() || length == -1)
        return QString();
    if (length < -1 || length >= remaining() / 2) {
        fail(QStringLiteral("string16 of %1 units before byte %2").arg(length).arg(m_position));
        return QString();
    }
    const int size = (length + 1) * 2;
    const char *bytes = take(size, "string16");
    if (bytes == nullptr || !takePadding(size))
        return QString();
    QString text(length, Qt::Uninitialized);
    for (int i = 0; i < length; ++i)
        text[i] = QChar(qFromLittleEndian<quint16>(bytes + qsizetype(2) * i));
    if (qFromLittleEndian<quint16>(bytes + size - 2) != 0) {
        fail(QStringLiteral("string16 before byte %1 has no terminator").arg(m_position));
        return QString();
    }
    return text;
}

QByteArray ParcelReader::byteArray()
{
    const qint32 length = int32();
    if (failed() || length == -1)
        return QByteArray();
    if (length < -1 || length > remaining()) {
        fail(QStringLiteral("byte array of %1 before byte %2").arg(length).arg(m_position));
        return QByteArray();
    }
    const char *bytes = take(length, "byte array");
    if (bytes == nullptr || !takePadding(length))
        return QByteArray();
    return length == 0 ? QByteArray("") : QByteArray(bytes, length);
}

qint32 ParcelReader::count(int smallestItem, bool *isNull)
{
    const qint32 items = int32();
    *isNull = items == -1;
    if (failed() || items == -1)
        return 0;
    if (items < -1 || items > remaining() / smallestItem) {
        fail(QStringLiteral("list of %1 items before byte %2").arg(items).arg(m_position));
        return 0;
    }
    return items;
}

ObjectReference ParcelReader::object()
{
    if (failed())
        return {};
    if (ObjectSize > remaining()) {
        fail(QStringLiteral("object at byte %1 is cut short").arg(m_position));
        return {};
    }
    const char *bytes = m_parcel.data.constData() + m_position;
    const bool listed = m_parcel.objects.contains(quint64(m_position));
    const auto type = qFromLittleEndian<quint32>(bytes);
    const auto binder = qFromLittleEndian<quint64>(bytes + 8);

    ObjectReference reference;
    if (type == BINDER_TYPE_HANDLE) {
        reference.kind = ObjectReference::Kind::Remote;
        reference.handle = quint32(binder);
    } else if (type == BINDER_TYPE_BINDER) {
        reference.kind = binder == 0 ? ObjectReference::Kind::Null : ObjectReference::Kind::Local;
        reference.id = binder;
    } else {
        fail(QStringLiteral("no object at byte %1").arg(m_position));
        return {};
    }
    if (listed != (reference.kind != ObjectReference::Kind::Null)) {
        fail(listed ? QStringLiteral("null object at byte %1 is listed").arg(m_position)
                    : QStringLiteral("object at byte %1 is not listed").arg(m_position));
        return {};
    }
    m_position += ObjectSize;
    return reference;
}

} // namespace SimRuntime
