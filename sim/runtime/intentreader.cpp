#include "runtime/intentreader.h"

#include <QJsonArray>

namespace SimRuntime {

namespace {

constexpr int IdentifierLevel = 29;
constexpr int DeepestNesting = 8; // selectors of selectors; a hostile request must not exhaust us
constexpr qint32 BundleMagic = 0x4c444e42;

QJsonObject readIntentAt(ParcelReader *reader, int sdk, int depth);

QJsonValue readString(ParcelReader *reader)
{
    const QString text = reader->string16();
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonArray readStrings(ParcelReader *reader)
{
    bool isNull = false;
    const qint32 count = reader->count(4, &isNull);
    QJsonArray strings;
    for (qint32 i = 0; i < count && !reader->failed(); ++i)
        strings.append(readString(reader));
    return strings;
}

QJsonValue readUri(ParcelReader *reader)
{
    const qint32 form = reader->int32();
    if (form == 1)
        return readString(reader);
    if (form != 0)
        reader->fail(QStringLiteral("Uri form %1").arg(form));
    return QJsonValue::Null;
}

QJsonValue readBundleValue(ParcelReader *reader)
{
    const qint32 tag = reader->int32();
    switch (tag) {
    case -1:
        return QJsonValue::Null;
    case 0:
        return readString(reader);
    case 1:
        return reader->int32();
    case 4:
        if (reader->string16() != QLatin1String("android.net.Uri"))
            reader->fail(QStringLiteral("unknown parcelable class"));
        return readUri(reader);
    case 6:
        return reader->int64();
    case 8: {
        const qint64 bits = reader->int64();
        double value = 0;
        memcpy(&value, &bits, sizeof value);
        return value;
    }
    case 9:
        return reader->int32() != 0;
    case 14:
        return readStrings(reader);
    case 16: {
        bool isNull = false;
        const qint32 count = reader->count(8, &isNull);
        QJsonArray uris;
        for (qint32 i = 0; i < count && !reader->failed(); ++i) {
            if (reader->string16() != QLatin1String("android.net.Uri"))
                reader->fail(QStringLiteral("unknown parcelable class"));
            uris.append(readUri(reader));
        }
        return uris;
    }
    default:
        reader->fail(QStringLiteral("Bundle value of type %1").arg(tag));
        return QJsonValue::Null;
    }
}

QJsonValue readBundle(ParcelReader *reader)
{
    const qint32 length = reader->int32();
    if (length == -1)
        return QJsonValue::Null;
    if (length == 0)
        return QJsonObject();
    if (reader->int32() != BundleMagic)
        reader->fail(QStringLiteral("Bundle without its magic number"));
    const int end = reader->remaining() - length;
    bool isNull = false;
    const qint32 count = reader->count(8, &isNull);
    QJsonObject pairs;
    for (qint32 i = 0; i < count && !reader->failed(); ++i) {
        const QString key = reader->string16();
        pairs.insert(key, readBundleValue(reader));
    }
    if (!reader->failed() && reader->remaining() != end)
        reader->fail(QStringLiteral("Bundle's length is off by %1").arg(reader->remaining() - end));
    return pairs;
}

QJsonValue readBounds(ParcelReader *reader)
{
    if (reader->int32() == 0)
        return QJsonValue::Null;
    QJsonArray edges;
    for (int i = 0; i < 4; ++i)
        edges.append(reader->int32());
    return edges;
}

QJsonObject readClipItem(ParcelReader *reader, int sdk, int depth)
{
    QJsonObject item;
    item.insert(QStringLiteral("text"), readString(reader));
    item.insert(QStringLiteral("htmlText"), readString(reader));
    item.insert(QStringLiteral("intent"), reader->int32() == 0
                                              ? QJsonValue(QJsonValue::Null)
                                              : QJsonValue(readIntentAt(reader, sdk, depth + 1)));
    item.insert(QStringLiteral("uri"), readUri(reader));
    return item;
}

QJsonObject readClipData(ParcelReader *reader, int sdk, int depth)
{
    QJsonObject clip;
    clip.insert(QStringLiteral("label"), readString(reader));
    clip.insert(QStringLiteral("mimeTypes"), readStrings(reader));
    clip.insert(QStringLiteral("extras"), readBundle(reader));
    clip.insert(QStringLiteral("date"), reader->int64());
    clip.insert(QStringLiteral("iconSize"), reader->byteArray().size());
    bool isNull = false;
    const qint32 count = reader->count(16, &isNull);
    QJsonArray items;
    for (qint32 i = 0; i < count && !reader->failed(); ++i)
        items.append(readClipItem(reader, sdk, depth));
    clip.insert(QStringLiteral("items"), items);
    return clip;
}

QJsonObject readIntentAt(ParcelReader *reader, int sdk, int depth)
{
    if (depth > DeepestNesting) {
        reader->fail(QStringLiteral("Intents nested too deeply"));
        return {};
    }
    QJsonObject intent;
    intent.insert(QStringLiteral("action"), readString(reader));
    intent.insert(QStringLiteral("data"), readUri(reader));
    intent.insert(QStringLiteral("type"), readString(reader));
    if (sdk >= IdentifierLevel)
        intent.insert(QStringLiteral("identifier"), readString(reader));
    intent.insert(QStringLiteral("flags"), reader->int32());
    intent.insert(QStringLiteral("package"), readString(reader));
    const QJsonValue componentPackage = readString(reader);
    intent.insert(QStringLiteral("componentPackage"), componentPackage);
    if (!componentPackage.isNull())
        intent.insert(QStringLiteral("componentClass"), readString(reader));
    intent.insert(QStringLiteral("bounds"), readBounds(reader));
    intent.insert(QStringLiteral("categories"), readStrings(reader));
    intent.insert(QStringLiteral("selector"), reader->int32() == 0
                                                  ? QJsonValue(QJsonValue::Null)
                                                  : readIntentAt(reader, sdk, depth + 1));
    intent.insert(QStringLiteral("clipData"), reader->int32() == 0
                                                  ? QJsonValue(QJsonValue::Null)
                                                  : readClipData(reader, sdk, depth));
    intent.insert(QStringLiteral("contentUserHint"), reader->int32());
    intent.insert(QStringLiteral("extras"), readBundle(reader));
    return intent;
}

} // namespace

QJsonObject readIntent(ParcelReader *reader, int sdk)
{
    return readIntentAt(reader, sdk, 0);
}

} // namespace SimRuntime
