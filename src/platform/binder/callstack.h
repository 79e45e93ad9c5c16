#pragma once

#include "platform/binder/incomingdata.h"
#include "platform/binder/types.h"

#include <deque>
#include <memory>
#include <vector>

namespace Binder {

/// One outgoing call that this process waits for.
struct OutgoingCall
{
    quint64 commandEnd = 0; ///< of its command, in all the bytes that were ever queued
    bool oneWay = false;
    bool confirmed = false; ///< the driver has sent it on
    bool done = false;
    bool refused = false; ///< the driver has not sent it: whoever would serve it is gone
    Status status = StatusOk;
    std::unique_ptr<IncomingData> reply;
};

/// Finds the outgoing call that a return of the driver is about.
///
/// Calls nest strictly: one begun while another waits (from a handler that serves a call back) is
/// over before the other's answer can come, so answers belong to the innermost. Completions
/// confirm what was sent, replies included, in the order of sending; only a one-way call, which
/// has no answer, needs to know its own.
class CallStack
{
public:
    /// The call has been queued; it stays with the caller until end().
    void begin(OutgoingCall *call);
    void end(OutgoingCall *call);

    /// A reply to an incoming call has been queued.
    void replySent();

    /// The driver has taken so many bytes of commands. What it returns is about these: a failure
    /// that it still had to tell keeps it from taking what came later.
    void onTaken(quint64 bytes) { m_bytesTaken = bytes; }

    void onCompleted();
    void onDead();
    void onAnswered(Status status, std::unique_ptr<IncomingData> reply);

private:
    bool isAwaited() const;
    bool isTaken(const OutgoingCall &call) const { return call.commandEnd <= m_bytesTaken; }

    std::vector<OutgoingCall *> m_waiting;
    std::deque<OutgoingCall *> m_unconfirmed; // null: a reply
    quint64 m_bytesTaken = 0;
};

} // namespace Binder
