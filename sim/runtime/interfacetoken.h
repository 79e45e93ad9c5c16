#pragma once

#include "runtime/parcelreader.h"
#include "runtime/parcelwriter.h"

#include <QString>

namespace SimRuntime {

/// The interface token that begins every request but the standard ones: before Android 10 the
/// strict-mode policy word, from SDK level 29 on that and the work source's uid, and then the
/// interface descriptor (AOSP frameworks/native, Parcel::writeInterfaceToken).
void writeInterfaceToken(ParcelWriter *writer, const QString &descriptor, int sdk);

/// The descriptor of a token in the layout of this level; the words before it may hold anything.
/// A token in the other layout reads as a problem or as some other descriptor.
QString readInterfaceToken(ParcelReader *reader, int sdk);

} // namespace SimRuntime
