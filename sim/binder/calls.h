#pragma once

#include <cstdint>
#include <memory>

namespace SimBinder {

class Client;
struct Transaction;

/// Takes an answered or failed call off its caller's stack. The caller is still there.
void endCall(Transaction &call);

/// Ends a call without a reply: its caller is told `code`. If the caller is gone, the call that
/// it was serving when it made this one can have no reply either, and so on outwards.
void failCall(std::shared_ptr<Transaction> call, std::uint32_t code);

/// Whether `client` waits, directly or through others, for the call `innermost` to be answered.
/// A call to it is then nested: it is delivered to the waiting thread.
bool isWaitingFor(const Client &client, const Transaction *innermost);

} // namespace SimBinder
