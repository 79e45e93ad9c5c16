#pragma once

#include "platform/binder/reader.h"
#include "platform/binder/writer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QVariantMap>

#include <cstddef>
#include <memory>
#include <optional>

namespace Binder {
class IncomingReply;
class IncomingRequest;
class LocalObject;
class OutgoingReply;
class OutgoingRequest;
class RemoteObject;
} // namespace Binder

/// One direction of one binder message, in Qt types and the Android Parcel encoding
/// (frameworks/native, libs/binder/Parcel.cpp).
///
/// A parcel either writes (outgoing request or reply) or reads (incoming request or reply). It
/// never owns the message, which must live as long as the parcel is used. Copies of a writing
/// parcel append to the same message; a copy of a reading parcel reads on by itself.
///
/// A message gets at most MaxComplaints lines about what is wrong with it: counts are just numbers
/// that somebody sent, and may promise a million values of which none can be read.
///
/// Nothing fails loudly: a write to a parcel that does not write is skipped, and a read from one
/// that does not read, or whose message is used up, gives the default value and consumes nothing.
/// Defaults: −1 for numbers, false, the null string, and empty containers.
class BinderParcel
{
public:
    static constexpr int MaxComplaints = 16;

    /// Neither writes nor reads: the reply parcel of a one-way call.
    BinderParcel() = default;
    explicit BinderParcel(Binder::OutgoingRequest &request);
    explicit BinderParcel(const Binder::IncomingRequest &request);
    explicit BinderParcel(Binder::OutgoingReply &reply);
    explicit BinderParcel(const Binder::IncomingReply &reply);
    explicit BinderParcel(const Binder::Writer &writer);
    explicit BinderParcel(const Binder::Reader &reader);

    void writeInt32(int value);
    void writeInt64(qlonglong value);
    void writeBool(bool value); ///< int32 0 or 1
    void writeDouble(double value);
    void writeString(const QString &value); ///< string16; a null QString is the null string
    void writeStringList(const QStringList &values);          ///< int32 count, then each string
    void writeByteArray(const QByteArray &value);             ///< int32 length, then the bytes
    void writeLocalObject(const Binder::LocalObject *object); ///< null pointer: null object
    void writeUri(const QUrl &value); ///< int32 0, or int32 1 and the text as string16

    /// One Bundle value: int32 type tag, then the value. A type that Bundles of ours do not carry
    /// writes nothing and logs a critical line.
    void writeValue(const QVariant &value);

    /// Length, magic "BNDL", count and the pairs in key order.
    void writeBundle(const QVariantMap &values);

    /// How much of the message has not been read yet; 0 for a parcel that does not read.
    std::size_t bytesRemaining() const { return m_reader ? m_reader->bytesRemaining() : 0; }

    int readInt32();
    qlonglong readInt64();
    bool readBool();
    double readDouble();
    QString readString();
    QStringList readStringList();
    QByteArray readByteArray();
    std::shared_ptr<Binder::RemoteObject> readNullableObject(); ///< null: null object, or none

    /// Any of the three forms of android.net.Uri; an empty URL for every other type.
    QUrl readUri();

    /// A part of an opaque or hierarchical Uri, percent-decoded.
    QString readUriPart();

    /// One Bundle value; invalid for null and for types that are not read.
    QVariant readValue();
    QVariantMap readBundle();

    /// A count and its pairs, without the length and magic of a Bundle.
    QVariantMap readMap();

private:
    bool canRead() const { return m_reader && !m_reader->atEnd(); }

    /// Whether `count` items can still be in the message. One critical line when not: a count is
    /// just a number that the runtime sent.
    bool canHold(int count);

    /// Whether one more line about this message may be logged. The last one says that it is.
    bool mayComplain();

    /// One key and its value, as Bundles have them, into `values`.
    void readPair(QVariantMap *values);

    /// `count` pairs into `values`. `end` is how much of the message is left where they should end;
    /// a pair that begins there or later gets a warning.
    void readPairs(int count, qint64 end, QVariantMap *values);

    std::optional<Binder::Writer> m_writer;
    std::optional<Binder::Reader> m_reader;
    int m_complaints = 0;
};
