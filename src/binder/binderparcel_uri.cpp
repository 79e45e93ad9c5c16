#include "binder/binderparcel.h"

namespace {

// android.net.Uri's parcel forms (AOSP frameworks/base, core/java/android/net/Uri.java).
constexpr int NullUri = 0;
constexpr int StringUri = 1;
constexpr int OpaqueUri = 2;
constexpr int HierarchicalUri = 3;

// Representations of a Uri part (AbstractPart.Representation in the same file).
constexpr int DecodedPart = 2;

} // namespace

void BinderParcel::writeUri(const QUrl &value)
{
    const QString text = value.toString();
    if (text.isEmpty()) {
        writeInt32(NullUri);
        return;
    }
    writeInt32(StringUri);
    writeString(text);
}

QString BinderParcel::readUriPart()
{
    if (!canRead())
        return QString();
    // One string is read for every representation. A part in both forms (0) carries a second one,
    // which is left unread on purpose.
    const int representation = readInt32();
    QString part = readString();
    if (representation == DecodedPart)
        return part;
    return QUrl::fromPercentEncoding(part.toUtf8());
}

QUrl BinderParcel::readUri()
{
    QUrl uri;
    if (!canRead())
        return uri;
    switch (readInt32()) {
    case StringUri:
        uri.setUrl(readString(), QUrl::TolerantMode);
        break;
    case OpaqueUri:
        uri.setScheme(readString());
        uri.setPath(readUriPart(), QUrl::DecodedMode);
        uri.setFragment(readUriPart(), QUrl::TolerantMode);
        break;
    case HierarchicalUri:
        uri.setScheme(readString());
        uri.setAuthority(readUriPart(), QUrl::TolerantMode);
        uri.setPath(readUriPart(), QUrl::DecodedMode);
        uri.setQuery(readUriPart(), QUrl::TolerantMode);
        uri.setFragment(readUriPart(), QUrl::TolerantMode);
        break;
    default:
        break;
    }
    return uri;
}
