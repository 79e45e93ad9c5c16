#pragma once

#include "runtime/parcel.h"

#include <limits>
#include <optional>

namespace SimRuntime {

/// Android's status numbers that the runtime uses (frameworks/native, utils/Errors.h).
constexpr qint32 StatusOk = 0;
constexpr qint32 StatusPermissionDenied = -1;
constexpr qint32 StatusNameNotFound = -2;
constexpr qint32 StatusDeadObject = -32;
constexpr qint32 StatusUnknownTransaction = -74;
constexpr qint32 StatusFailedTransaction = std::numeric_limits<qint32>::min() + 2;

/// A request as the driver delivered it.
struct IncomingCall
{
    quint32 code = 0;
    bool oneWay = false;
    qint32 pid = 0;
    quint32 uid = 0;
    Parcel parcel;
};

/// What a two-way call is answered with: the parcel, or in its place a status other than 0.
struct Answer
{
    qint32 status = StatusOk;
    Parcel parcel;
};

/// An object of this process that others can call.
class BinderObject
{
public:
    virtual ~BinderObject() = default;

    /// Serves one call. Handles in the request are lost when this returns unless they have been
    /// acquired (BinderLoop::acquire()). No answer: a two-way caller waits until the loop is
    /// given one (BinderLoop::answer()).
    virtual std::optional<Answer> transact(const IncomingCall &call) = 0;

protected:
    BinderObject() = default;
    BinderObject(const BinderObject &) = default;
    BinderObject &operator=(const BinderObject &) = default;
};

} // namespace SimRuntime
