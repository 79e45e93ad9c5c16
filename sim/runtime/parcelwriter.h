#pragma once

#include "runtime/parcel.h"

#include <QString>

namespace SimRuntime {

/// Writes the items of an Android Parcel: little-endian, each padded with zeros to four bytes
/// (AOSP frameworks/native, libs/binder/Parcel.cpp).
class ParcelWriter
{
public:
    void int32(qint32 value);
    void int64(qint64 value);
    void boolean(bool value);
    void string16(const QString &text);      ///< the null QString is the null string
    void byteArray(const QByteArray &bytes); ///< the null QByteArray is the null array
    void localObject(quint64 id);            ///< an object of this process; its cookie is its id
    void remoteObject(quint32 handle);
    void nullObject();
    void file(int descriptor); ///< stays the caller's
    void append(const Parcel &parcel);
    void raw(const QByteArray &bytes); ///< bytes that were encoded elsewhere

    const Parcel &parcel() const { return m_parcel; }

private:
    void pad();
    void object(quint32 type, quint64 binder, quint64 cookie);

    Parcel m_parcel;
};

} // namespace SimRuntime
