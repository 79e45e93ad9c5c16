#pragma once

#include "platform/binder/types.h"

#include <QByteArray>

#include <cstddef>

namespace Binder {

class LocalObject;
class OutgoingData;

/// Appends Android Parcel items to an outgoing request or reply: little-endian, each item
/// zero-padded to a multiple of four bytes (AOSP frameworks/native, libs/binder/Parcel.cpp).
///
/// A writer does not own the message; it may be copied, and all copies append to the same end.
/// What would make the message longer than the driver could ever deliver is not appended, and
/// the message then fails as a whole when it is sent.
class Writer
{
public:
    explicit Writer(OutgoingData *data)
        : m_data(data)
    {
    }

    void appendInt32(qint32 value);
    void appendInt64(qint64 value);
    void appendBool(bool value);
    void appendDouble(double value);

    /// Both string writers produce string16; a null pointer is the null string (length −1).
    void appendString16(const char *utf8);
    void appendString16(const char16_t *units, int length);

    /// Length and bytes; a null array is written like an empty one, with length 0.
    void appendByteArray(const QByteArray &bytes);

    /// A reference to an object of this process, or the null object.
    void appendLocalObject(const LocalObject *object);

    /// Bytes of the message so far, interface token included.
    std::size_t bytesWritten() const;

    /// Replaces four bytes at `position`, a count that bytesWritten() returned before. A position
    /// beyond the end changes nothing.
    void overwriteInt32(std::size_t position, qint32 value);

private:
    OutgoingData *m_data;
};

} // namespace Binder
