#include "runtime/answers.h"

namespace SimRuntime {

namespace {

constexpr qint32 NoException = 0;
constexpr int RemoteStackTraceLevel = 28; // an empty stack trace follows the message from here on

} // namespace

Answer statusAnswer(qint32 status)
{
    return {status, {}};
}

Answer exceptionAnswer(qint32 exception, const QString &message, int sdk)
{
    ParcelWriter writer;
    writer.int32(exception);
    writer.string16(message);
    if (sdk >= RemoteStackTraceLevel)
        writer.int32(0);
    return {StatusOk, writer.parcel()};
}

Answer voidAnswer()
{
    return plainInt32Answer(NoException);
}

Answer int32Answer(qint32 value)
{
    ParcelWriter writer;
    writer.int32(NoException);
    writer.int32(value);
    return {StatusOk, writer.parcel()};
}

Answer plainInt32Answer(qint32 value)
{
    ParcelWriter writer;
    writer.int32(value);
    return {StatusOk, writer.parcel()};
}

} // namespace SimRuntime
