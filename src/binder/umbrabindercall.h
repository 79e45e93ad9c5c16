#pragma once

#include "binder/binderparcel.h"
#include "platform/binder/message.h"
#include "platform/binder/types.h"

#include <memory>

namespace Binder {
class Client;
} // namespace Binder

class UmbraBinderConnection;

/// One synchronous call of a connection's service, made within one function: fill fields() in the
/// order of the call's fields, send(), read the reply. (UmbraBinderTransaction is for calls that
/// outlive the function that makes them.)
///
/// It holds the client until it is deleted, because a handler that runs inside the call may end
/// the connection.
class UmbraBinderCall
{
public:
    explicit UmbraBinderCall(UmbraBinderConnection &connection);
    ~UmbraBinderCall();
    UmbraBinderCall(const UmbraBinderCall &) = delete;
    UmbraBinderCall &operator=(const UmbraBinderCall &) = delete;

    /// False without a connection: what is written then goes nowhere, and nothing is sent.
    bool isPossible() const { return m_request != nullptr; }

    BinderParcel &fields() { return m_fields; }

    /// Blocks until the runtime answers. See Binder::Client::transact(); without a connection null,
    /// with StatusDeadObject.
    std::unique_ptr<Binder::IncomingReply> send(quint32 code, Binder::Status *status = nullptr);

private:
    std::shared_ptr<Binder::Client> m_client;
    std::unique_ptr<Binder::OutgoingRequest> m_request;
    BinderParcel m_fields;
};
