#include "binder/intentcodec.h"

#include "binder/binderparcel.h"
#include "binder/logging.h"
#include "config/daemonconfig.h"

#include <utility>

namespace {

constexpr int Absent = 0;
constexpr int Present = 1;
constexpr int NullBundle = -1;

// What a reader of clip items takes for "no intent"; the writer writes Absent. Both sides are fixed
// with the runtime image.
constexpr int AbsentItemIntent = -1;

constexpr int FirstSdkWithIdentifier = 29;

bool hasIdentifier()
{
    return DaemonConfig::androidSdkVersion() >= FirstSdkWithIdentifier;
}

bool isTooDeep(int depth)
{
    if (depth <= MaxIntentDepth)
        return false;
    qCCritical(parcelLog) << "Intent nested too deep, leaving out the rest";
    return true;
}

// The codec of records nested `depth` levels deep.
class Codec
{
public:
    Codec(BinderParcel &parcel, int depth)
        : m_parcel(parcel)
        , m_depth(depth)
    {
    }

    void write(const Intent &intent) const;
    void write(const ClipData &clipData) const;
    void write(const ClipDataItem &item) const;

    Intent readIntent() const;
    ClipData readClipData() const;
    ClipDataItem readClipDataItem() const;

private:
    Codec nested() const { return Codec(m_parcel, m_depth + 1); }

    void writeBounds(const QRect &bounds) const;
    void writeOptional(const OwnedValue<Intent> &intent) const;
    QRect readBounds() const;
    OwnedValue<Intent> readNestedIntent() const;

    BinderParcel &m_parcel;
    int m_depth;
};

void Codec::writeBounds(const QRect &bounds) const
{
    if (!bounds.isValid()) {
        m_parcel.writeInt32(Absent);
        return;
    }
    m_parcel.writeInt32(Present);
    m_parcel.writeInt32(bounds.left());
    m_parcel.writeInt32(bounds.top());
    m_parcel.writeInt32(bounds.right());
    m_parcel.writeInt32(bounds.bottom());
}

QRect Codec::readBounds() const
{
    if (m_parcel.readInt32() != Present)
        return QRect();
    const int left = m_parcel.readInt32();
    const int top = m_parcel.readInt32();
    const int right = m_parcel.readInt32();
    const int bottom = m_parcel.readInt32();
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

void Codec::writeOptional(const OwnedValue<Intent> &intent) const
{
    if (!intent || isTooDeep(m_depth + 1)) {
        m_parcel.writeInt32(Absent);
        return;
    }
    m_parcel.writeInt32(Present);
    nested().write(*intent);
}

OwnedValue<Intent> Codec::readNestedIntent() const
{
    if (isTooDeep(m_depth + 1)) {
        m_parcel = BinderParcel(); // what follows cannot be found without reading this intent
        return {};
    }
    return nested().readIntent();
}

void Codec::write(const Intent &intent) const
{
    m_parcel.writeString(intent.action);
    m_parcel.writeUri(intent.data);
    m_parcel.writeString(intent.type);
    if (hasIdentifier())
        m_parcel.writeString(intent.identifier);
    m_parcel.writeInt32(intent.flags);
    m_parcel.writeString(intent.package);
    m_parcel.writeString(intent.componentPackage);
    if (!intent.componentPackage.isEmpty())
        m_parcel.writeString(intent.componentClass);
    writeBounds(intent.sourceBounds);
    m_parcel.writeStringList(intent.categories);
    writeOptional(intent.selector);
    if (intent.clipData) {
        m_parcel.writeInt32(Present);
        write(*intent.clipData);
    } else {
        m_parcel.writeInt32(Absent);
    }
    m_parcel.writeInt32(intent.contentUserHint);
    if (intent.extras.isEmpty())
        m_parcel.writeInt32(NullBundle);
    else
        m_parcel.writeBundle(intent.extras);
}

Intent Codec::readIntent() const
{
    Intent intent;
    intent.action = m_parcel.readString();
    intent.data = m_parcel.readUri();
    intent.type = m_parcel.readString();
    if (hasIdentifier())
        intent.identifier = m_parcel.readString();
    intent.flags = m_parcel.readInt32();
    intent.package = m_parcel.readString();
    intent.componentPackage = m_parcel.readString();
    if (!intent.componentPackage.isEmpty())
        intent.componentClass = m_parcel.readString();
    intent.sourceBounds = readBounds();
    intent.categories = m_parcel.readStringList();
    if (m_parcel.readInt32() == Present)
        intent.selector = readNestedIntent();
    if (m_parcel.readInt32() == Present)
        intent.clipData = readClipData();
    intent.contentUserHint = m_parcel.readInt32();
    intent.extras = m_parcel.readBundle();
    return intent;
}

void Codec::write(const ClipData &clipData) const
{
    m_parcel.writeString(clipData.label);
    m_parcel.writeStringList(clipData.types);
    m_parcel.writeBundle(clipData.extras);
    m_parcel.writeInt64(clipData.date);
    m_parcel.writeByteArray(clipData.icon);
    m_parcel.writeInt32(clipData.items.size());
    for (const ClipDataItem &item : clipData.items)
        write(item);
}

ClipData Codec::readClipData() const
{
    ClipData clipData;
    clipData.label = m_parcel.readString();
    clipData.types = m_parcel.readStringList();
    clipData.extras = m_parcel.readBundle();
    clipData.date = m_parcel.readInt64();
    clipData.icon = m_parcel.readByteArray();
    const int count = m_parcel.readInt32();
    for (int i = 0; i < count; ++i) {
        const std::size_t before = m_parcel.bytesRemaining();
        ClipDataItem item = readClipDataItem();
        // At the end, and where there is no plain data, reads consume nothing: the count is wrong.
        // cppcheck-suppress knownConditionTrueFalse // reading moves on
        if (m_parcel.bytesRemaining() == before)
            break;
        clipData.items.append(std::move(item));
    }
    return clipData;
}

void Codec::write(const ClipDataItem &item) const
{
    m_parcel.writeString(item.text);
    m_parcel.writeString(item.htmlText);
    writeOptional(item.intent);
    m_parcel.writeUri(item.uri);
}

ClipDataItem Codec::readClipDataItem() const
{
    ClipDataItem item;
    item.text = m_parcel.readString();
    item.htmlText = m_parcel.readString();
    if (m_parcel.readInt32() != AbsentItemIntent)
        item.intent = readNestedIntent();
    item.uri = m_parcel.readUri();
    return item;
}

} // namespace

void writeIntent(BinderParcel &parcel, const Intent &intent)
{
    Codec(parcel, 1).write(intent);
}

Intent readIntent(BinderParcel &parcel)
{
    return Codec(parcel, 1).readIntent();
}

void writeClipData(BinderParcel &parcel, const ClipData &clipData)
{
    Codec(parcel, 1).write(clipData);
}

ClipData readClipData(BinderParcel &parcel)
{
    return Codec(parcel, 1).readClipData();
}

void writeClipDataItem(BinderParcel &parcel, const ClipDataItem &item)
{
    Codec(parcel, 1).write(item);
}

ClipDataItem readClipDataItem(BinderParcel &parcel)
{
    return Codec(parcel, 1).readClipDataItem();
}
