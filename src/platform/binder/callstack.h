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
    bool oneWay = false;
    bool done = false;
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

    void onCompleted();
    void onAnswered(Status status, std::unique_ptr<IncomingData> reply);

private:
    std::vector<OutgoingCall *> m_waiting;
    std::deque<OutgoingCall *> m_unconfirmed; // null: a reply
};

} // namespace Binder
