#include "binder/calls.h"

#include "binder/client.h"

namespace SimBinder {

void endCall(Transaction &call)
{
    call.from->setInnermostCall(call.callersOuter);
    call.from = nullptr;
}

void failCall(std::shared_ptr<Transaction> call, std::uint32_t code)
{
    while (call != nullptr && call->from == nullptr)
        call = call->callersOuter;
    if (call == nullptr)
        return;
    Client *caller = call->from;
    endCall(*call);
    caller->queueForThread(ReturnWork{code});
}

bool isWaitingFor(const Client &client, const Transaction *innermost)
{
    for (const Transaction *call = innermost; call != nullptr; call = call->callersOuter.get()) {
        if (call->from == &client)
            return true;
    }
    return false;
}

} // namespace SimBinder
