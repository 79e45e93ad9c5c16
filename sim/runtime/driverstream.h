#pragma once

#include <QByteArray>
#include <QVector>

namespace SimRuntime {

/// One return command of the driver with its payload (linux/android/binder.h, BR_...).
struct DriverReturn
{
    quint32 code = 0;
    QByteArray payload;
};

/// Splits what one read gave into commands. In the stream a code is followed at once by its
/// payload; the payload's size is part of the code, so unknown commands are split off as well.
/// A cut-off command at the end is dropped.
QVector<DriverReturn> splitReturns(const QByteArray &stream);

/// The payload as the structure that belongs to its code; zeros when it is too short.
template <typename Payload>
Payload payloadAs(const DriverReturn &command)
{
    Payload payload{};
    if (command.payload.size() >= int(sizeof payload))
        memcpy(&payload, command.payload.constData(), sizeof payload);
    return payload;
}

/// Appends a command (BC_...) and its payload to what will be written.
template <typename Payload>
void appendCommand(QByteArray *stream, quint32 code, const Payload &payload)
{
    stream->append(reinterpret_cast<const char *>(&code), sizeof code);
    stream->append(reinterpret_cast<const char *>(&payload), sizeof payload);
}

/// A command without payload.
void appendCommand(QByteArray *stream, quint32 code);

} // namespace SimRuntime
