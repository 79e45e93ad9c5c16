#pragma once

#include "platform/binder/driver.h"
#include "runtime/driverstream.h"
#include "runtime/parcel.h"

#include <QByteArray>
#include <QQueue>
#include <QVector>

#include <linux/android/binder.h>

/// A binder driver that returns what a test told it to and keeps what was written to it.
class ScriptedDriver : public Binder::Driver
{
public:
    struct Written
    {
        quint32 command = 0;
        QByteArray payload;
        SimRuntime::Parcel parcel; ///< of a transaction or reply
    };

    ScriptedDriver();
    ~ScriptedDriver() override;

    int control(unsigned long request, void *argument) override;
    const void *map(std::size_t size) override;
    int descriptor() const override { return m_readiness; }

    /// One read gives these commands after the usual no-op.
    void give(const QByteArray &commands);

    /// One read fails with this error after the write half has been done.
    void giveError(int error);

    /// One read gives an incoming transaction or reply. Returns its buffer's address.
    quint64 giveMessage(quint32 command, quint64 target, quint32 code, quint32 flags,
                        const SimRuntime::Parcel &parcel);

    /// From now on one exchange takes at most this many bytes of what is written.
    void setLargestWrite(int bytes) { m_largestWrite = bytes; }

    int protocolVersion = BINDER_CURRENT_PROTOCOL_VERSION;
    bool hasContextManager = false;

    /// What was written since the last call, oldest first.
    QVector<Written> takeWritten();

private:
    struct Read
    {
        QByteArray commands;
        int error = 0;
    };
    struct Message
    {
        binder_transaction_data transaction;
        SimRuntime::Parcel parcel;
    };

    void keep(const QByteArray &stream);
    void updateReadiness();

    int m_readiness;
    int m_largestWrite = -1;
    QByteArray m_partlyWritten;
    QQueue<Read> m_reads;
    QVector<Written> m_written;
    QVector<std::shared_ptr<Message>> m_messages; ///< the buffers handed out
};

/// A command without payload, or with one.
QByteArray driverCommand(quint32 code);

template <typename Payload>
QByteArray driverCommand(quint32 code, const Payload &payload)
{
    QByteArray stream;
    SimRuntime::appendCommand(&stream, code, payload);
    return stream;
}
