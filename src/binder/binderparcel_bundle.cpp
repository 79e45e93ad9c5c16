#include "binder/binderparcel.h"
#include "binder/logging.h"

#include <QMetaType>

#include <limits>

namespace {

// "BNDL" in memory order (AOSP frameworks/base, core/java/android/os/BaseBundle.java).
constexpr int BundleMagic = 0x4C444E42;
constexpr int LengthPlaceholder = 1;
constexpr qint64 NoEnd = -1;

// Value tags (AOSP frameworks/base, core/java/android/os/Parcel.java).
enum ValueTag : int {
    NullTag = -1,
    StringTag = 0,
    IntegerTag = 1,
    ParcelableTag = 4,
    LongTag = 6,
    DoubleTag = 8,
    BooleanTag = 9,
    StringArrayTag = 14,
    ParcelableArrayTag = 16,
};

QString uriClassName()
{
    return QStringLiteral("android.net.Uri");
}

} // namespace

void BinderParcel::writeValue(const QVariant &value)
{
    if (!m_writer)
        return;
    if (value.isNull()) {
        writeInt32(NullTag);
        return;
    }
    switch (value.userType()) {
    case QMetaType::QString:
        writeInt32(StringTag);
        writeString(value.toString());
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
        writeInt32(IntegerTag);
        writeInt32(value.toInt());
        break;
    case QMetaType::QUrl:
        writeInt32(ParcelableTag);
        writeString(uriClassName());
        writeUri(value.toUrl());
        break;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        writeInt32(LongTag);
        writeInt64(value.toLongLong());
        break;
    case QMetaType::Double:
        writeInt32(DoubleTag);
        writeDouble(value.toDouble());
        break;
    case QMetaType::Bool:
        writeInt32(BooleanTag);
        writeBool(value.toBool());
        break;
    case QMetaType::QStringList:
        writeInt32(StringArrayTag);
        writeStringList(value.toStringList());
        break;
    case QMetaType::QVariantList: {
        const QVariantList elements = value.toList();
        writeInt32(ParcelableArrayTag);
        writeInt32(elements.size());
        for (const QVariant &element : elements) {
            if (element.userType() != QMetaType::QUrl) {
                // The count stays as it is: the runtime sees a short array.
                if (mayComplain())
                    qCCritical(parcelLog)
                        << "Unsupported parcelable type!" << QMetaType::typeName(value.userType());
                continue;
            }
            writeString(uriClassName());
            writeUri(element.toUrl());
        }
        break;
    }
    default:
        if (mayComplain())
            qCCritical(parcelLog) << "Unsupported write bundle type!"
                                  << QMetaType::typeName(value.userType());
        break;
    }
}

void BinderParcel::writeBundle(const QVariantMap &values)
{
    if (!m_writer)
        return;
    const std::size_t lengthPosition = m_writer->bytesWritten();
    writeInt32(LengthPlaceholder);
    writeInt32(BundleMagic);
    const std::size_t start = m_writer->bytesWritten();
    writeInt32(values.size());
    for (auto pair = values.begin(); pair != values.end(); ++pair) {
        writeString(pair.key());
        writeValue(pair.value());
    }
    const std::size_t length = m_writer->bytesWritten() - start;
    if (length > static_cast<std::size_t>(std::numeric_limits<qint32>::max())) {
        qCCritical(parcelLog) << "Bundle too long for signed int32!" << length;
        return;
    }
    m_writer->overwriteInt32(lengthPosition, static_cast<qint32>(length));
}

QVariant BinderParcel::readValue()
{
    if (!canRead())
        return QVariant();
    const int tag = readInt32();
    switch (tag) {
    case NullTag:
        return QVariant();
    case StringTag:
        return readString();
    case IntegerTag:
        return readInt32();
    case LongTag:
        return readInt64();
    case DoubleTag:
        return readDouble();
    case BooleanTag:
        return readBool();
    case StringArrayTag:
        return readStringList();
    default:
        if (mayComplain())
            qCCritical(parcelLog) << "Unsupported read bundle type!" << tag;
        return QVariant();
    }
}

QVariantMap BinderParcel::readBundle()
{
    QVariantMap values;
    if (!canRead())
        return values;
    const int length = readInt32();
    if (length < 0) {
        qCDebug(parcelLog) << "Null bundle";
        return values;
    }
    const int magic = readInt32();
    if (magic != BundleMagic) {
        qCCritical(parcelLog)
            << QStringLiteral("Bad bundle magic number 0x%08").arg(magic, 0, 10, QLatin1Char(' '));
        return values;
    }
    const qint64 end = static_cast<qint64>(m_reader->bytesRemaining()) - length;
    const int count = readInt32();
    qCDebug(parcelLog) << "Bundle size: " << count;
    if (count < 1 || !canHold(count))
        return values;
    readPairs(count, end, &values);
    return values;
}

QVariantMap BinderParcel::readMap()
{
    QVariantMap values;
    if (!canRead())
        return values;
    const int count = readInt32();
    if (count < 1 || !canHold(count))
        return values;
    readPairs(count, NoEnd, &values);
    return values;
}

void BinderParcel::readPairs(int count, qint64 end, QVariantMap *values)
{
    int idle = 0;
    for (int i = 0; i < count; ++i) {
        const std::size_t before = bytesRemaining();
        if (static_cast<qint64>(before) <= end && mayComplain())
            qCWarning(parcelLog) << "Bundle too big";
        readPair(values);
        // Nothing new can come of what cannot be read; each try has its lines, but not a million.
        if (bytesRemaining() == before && ++idle > MaxComplaints)
            break;
    }
}

void BinderParcel::readPair(QVariantMap *values)
{
    const QString key = readString();
    const QVariant value = readValue();
    qCDebug(parcelLog) << "Key: " << key << "Value: " << value;
    values->insert(key, value);
}
