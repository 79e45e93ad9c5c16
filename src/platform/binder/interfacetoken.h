#pragma once

#include "platform/binder/writer.h"

#include <QByteArray>

#include <cstddef>

namespace Binder {

class IncomingData;

/// The interface token with which every request begins: words of bookkeeping, whose number
/// depends on the Android release, and the descriptor of the interface as string16
/// (AOSP frameworks/native, libs/binder/Parcel.cpp: writeInterfaceToken).
namespace InterfaceToken {

/// Writes the token in the layout of the SDK level. Below 29, and while the level is unknown (0),
/// one word comes first, the strict-mode policy; from 29 on also the work source.
void write(Writer writer, const QByteArray &descriptor, int sdkLevel);

struct Found
{
    QByteArray descriptor;   ///< UTF-8; null when the request does not begin with a token
    std::size_t payload = 0; ///< where the request's first field lies
};

/// Finds the token in either layout, whatever the words before the descriptor are: the level may
/// not be known yet when the first call comes in. The layout that gives the expected descriptor
/// is preferred.
Found read(const IncomingData &data, const QByteArray &expectedDescriptor);

} // namespace InterfaceToken
} // namespace Binder
