#pragma once

#include "platform/binder/driver.h"
#include "runtime/binderobject.h"
#include "runtime/driverstream.h"
#include "runtime/parcel.h"

#include <QHash>
#include <QObject>
#include <QQueue>
#include <QVector>

#include <functional>
#include <memory>

class QSocketNotifier;

struct binder_transaction_data;

namespace SimRuntime {

enum class CallMode { TwoWay, OneWay };

/// One open file of the binder device and everything that is bound to it: the objects published
/// through it, the references held through it, the calls in progress, the deaths watched for.
///
/// Nothing here blocks: calls are sent and their outcome is told later from the event loop, so
/// that a dead or hanging peer holds up nobody. As one thread serves the file, the driver delivers
/// no unrelated call while a two-way call, in or out, is in progress.
class BinderLoop : public QObject
{
    Q_OBJECT

public:
    /// Told once: the callee's status (or StatusDeadObject, StatusFailedTransaction) and the
    /// reply. Handles in the reply must be acquired before the function returns.
    using Completion = std::function<void(qint32 status, const Parcel &reply)>;

    explicit BinderLoop(std::unique_ptr<Binder::Driver> driver, QObject *parent = nullptr);
    ~BinderLoop() override;

    /// Maps the receive buffer and begins to serve. False when it is no 64-bit binder device.
    bool start();

    /// Makes `object` what all processes reach as handle 0. False when there is one already.
    bool becomeContextManager(BinderObject *object);

    /// Makes an object callable and returns its id for parcels. Not owned; it must live as long
    /// as this file.
    quint64 publish(BinderObject *object);

    /// Counted: a handle stays valid until it has been released as often as acquired.
    void acquire(quint32 handle);
    void release(quint32 handle);

    /// `onDeath` runs once, from the event loop, when the process behind the handle is gone (soon,
    /// if it is gone already). The handle must stay acquired meanwhile. Returns the watch's id.
    quint64 watch(quint32 handle, const std::function<void()> &onDeath);
    void unwatch(quint64 watch);

    /// Sends a request. Only one two-way call may be in progress at a time.
    void send(quint32 handle, quint32 code, const Parcel &request, CallMode mode,
              const Completion &completion);

    /// Answers the call that was left unanswered last. Does nothing when there is none.
    void answer(const Answer &answer);

Q_SIGNALS:
    /// The device is gone; nothing works any more.
    void lost();

private:
    struct DeathWatch
    {
        quint64 cookie = 0;
        QHash<quint64, std::function<void()>> handlers;
    };

    void schedulePump();
    void pump();
    bool exchange();
    void handle(const DriverReturn &command);
    void handleTransaction(const binder_transaction_data &transaction);
    void handleReply(const binder_transaction_data &transaction);
    void handleSent(qint32 status);
    void handleDeath(quint64 cookie);
    void finishTwoWay(qint32 status, const Parcel &reply);
    void writeTransaction(quint32 command, quint32 target, quint32 code, quint32 flags,
                          const Parcel &parcel);

    std::unique_ptr<Binder::Driver> m_driver;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QByteArray m_toWrite;
    QVector<std::shared_ptr<Parcel>> m_beingWritten; ///< the driver reads from them until written
    bool m_pumpScheduled = false;
    bool m_lost = false;

    QHash<quint64, BinderObject *> m_objects;
    QHash<quint32, int> m_acquired;
    QHash<quint32, DeathWatch> m_watches;
    quint64 m_lastNumber = 0; ///< of objects, cookies and watches; never reused

    QVector<quint64> m_unanswered; ///< buffers of calls in progress, innermost last
    QQueue<Completion> m_sent;     ///< what has been written and not been confirmed yet
    Completion m_twoWay;           ///< the outgoing call in progress
};

} // namespace SimRuntime
