#pragma once

#include <QtGlobal>

#include <limits>

namespace Binder {

/// Names one installed registration or death handler; NoHandler is never a valid id.
using HandlerId = quint64;
constexpr HandlerId NoHandler = 0;

/// The length that a null string or array has in a Parcel (frameworks/native,
/// libs/binder/Parcel.cpp).
constexpr qint32 NullLength = -1;

/// A remote object's number within this process's open file of the driver.
using Handle = quint32;
constexpr Handle ContextManagerHandle = 0;

/// A transaction's outcome. The numbers are Android's status_t (frameworks/native,
/// libs/utils/include/utils/Errors.h); 0 is success, a handler's own refusal is 1.
using Status = qint32;
constexpr Status StatusOk = 0;
constexpr Status StatusRefused = 1;
constexpr Status StatusPermissionDenied = -1;
constexpr Status StatusNameNotFound = -2;
constexpr Status StatusNoMemory = -12;
constexpr Status StatusBadValue = -22;
constexpr Status StatusDeadObject = -32;
constexpr Status StatusUnknownTransaction = -74;
constexpr Status StatusFailedTransaction = std::numeric_limits<qint32>::min() + 2;

/// Transaction flags of the driver (linux/android/binder.h: enum transaction_flags).
constexpr quint32 FlagOneWay = 0x01;

} // namespace Binder
