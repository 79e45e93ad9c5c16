#pragma once

#include <QtGlobal>

#include <cstddef>
#include <linux/android/binder.h>

namespace Binder {

/// A binder object as it lies in a message (linux/android/binder.h). The Android releases that we
/// talk to write nothing behind it.
using FlatObject = flat_binder_object;
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "messages are read and written as they lie");
static_assert(sizeof(FlatObject) == 24, "layout of objects in messages");
static_assert(offsetof(FlatObject, cookie) == 16, "layout of objects in messages");

/// What Android writes for every object: calls may run at the lowest priority (nice 19), and may
/// carry file descriptors. Without the latter the driver would refuse to deliver dump requests,
/// which carry one, and the dumper would be told that this process is broken.
constexpr quint32 ObjectFlags = 0x13 | FLAT_BINDER_FLAG_ACCEPTS_FDS;

/// Rounds up to the four bytes at which every item of a message begins.
constexpr std::size_t padded(std::size_t size)
{
    return (size + 3) & ~std::size_t(3);
}

} // namespace Binder
