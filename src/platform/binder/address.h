#pragma once

#include <QtGlobal>

namespace Binder {

/// A pointer as the driver's structures carry it (linux/android/binder.h: binder_uintptr_t).
inline quint64 address(const void *pointer)
{
    return reinterpret_cast<quintptr>(pointer);
}

} // namespace Binder
