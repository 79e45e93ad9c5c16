#pragma once

#include "platform/binder/types.h"

#include <cstddef>
#include <memory>

namespace Binder {

class IncomingData;
class RemoteObject;

/// Reads the items of an incoming request or reply in the order in which they were written.
///
/// The data comes from inside the container and is not trusted: every read checks that the whole
/// item lies within the message. A failed read returns false, consumes nothing and leaves its
/// output untouched. A reader does not own the message; pointers that it returns are valid as
/// long as the message is. Plain reads across a binder object fail, as they do in Android.
class Reader
{
public:
    /// Reads `data` from byte `position` on.
    explicit Reader(const IncomingData *data, std::size_t position = 0);

    bool atEnd() const;
    std::size_t bytesRemaining() const;

    bool readInt32(qint32 *value);
    bool readInt64(qint64 *value);
    bool readBool(bool *value); ///< any non-zero word is true
    bool readDouble(double *value);

    /// string16 as UTF-16; the null string gives a null pointer and length 0.
    bool readString16(const char16_t **units, int *length);

    /// Length and bytes; the null array (length −1) gives a null pointer and size 0.
    bool readByteArray(const char **bytes, int *size);

    /// A binder object; the null object gives a null pointer. An object of this process that
    /// comes home is not a remote object and also gives null.
    bool readNullableObject(std::shared_ptr<RemoteObject> *object);

private:
    const IncomingData *m_data;
    std::size_t m_position;
};

} // namespace Binder
