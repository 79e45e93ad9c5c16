#pragma once

#include "runtime/binderobject.h"
#include "runtime/parcelwriter.h"

#include <QString>

namespace SimRuntime {

/// Codes that an AIDL reply begins with when the service threw (AOSP, android.os.Parcel).
constexpr qint32 ExceptionSecurity = -1;
constexpr qint32 ExceptionIllegalArgument = -3;
constexpr qint32 ExceptionIllegalState = -5;

/// A status in place of a reply.
Answer statusAnswer(qint32 status);

/// The reply of a service that threw; the layout depends on the SDK level.
Answer exceptionAnswer(qint32 exception, const QString &message, int sdk);

/// What an AIDL method without result answers: no exception.
Answer voidAnswer();

/// No exception, then one int32.
Answer int32Answer(qint32 value);

/// One int32 alone, as services that were not generated from AIDL answer.
Answer plainInt32Answer(qint32 value);

} // namespace SimRuntime
