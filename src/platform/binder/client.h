#pragma once

#include "platform/binder/message.h"
#include "platform/binder/types.h"

#include <QByteArray>

#include <memory>

namespace Binder {

class RemoteObject;

/// Calls a remote object through one interface.
class Client
{
public:
    /// Null when `object` is null or `descriptor` is empty.
    static std::unique_ptr<Client> create(std::shared_ptr<RemoteObject> object,
                                          const char *descriptor);
    ~Client();

    /// A new request that begins with the interface token of this client's descriptor.
    std::unique_ptr<OutgoingRequest> createRequest() const;

    /// Sends the request and blocks until the runtime answers; calls that it makes back into this
    /// process as part of answering are served meanwhile. Returns the reply, or null when none
    /// came; `status` (may be null) is then the reason: StatusDeadObject, StatusFailedTransaction
    /// or the status the callee sent in place of a reply.
    std::unique_ptr<IncomingReply> transact(quint32 code, const OutgoingRequest &request,
                                            Status *status = nullptr);

    /// Sends the request without waiting for it to be served. Returns StatusOk once the driver
    /// has taken it.
    Status transactOneWay(quint32 code, const OutgoingRequest &request);

private:
    Client(std::shared_ptr<RemoteObject> object, const QByteArray &descriptor);

    std::shared_ptr<RemoteObject> m_object;
    QByteArray m_descriptor;
};

} // namespace Binder
