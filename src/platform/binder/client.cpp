#include "platform/binder/client.h"

#include "platform/binder/incomingdata.h"
#include "platform/binder/interfacetoken.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/process.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/sdklevel.h"

#include <utility>

namespace Binder {

std::unique_ptr<Client> Client::create(std::shared_ptr<RemoteObject> object, const char *descriptor)
{
    const QByteArray interface(descriptor);
    if (object == nullptr || interface.isEmpty())
        return nullptr;
    return std::unique_ptr<Client>(new Client(std::move(object), interface));
}

Client::Client(std::shared_ptr<RemoteObject> object, const QByteArray &descriptor)
    : m_object(std::move(object))
    , m_descriptor(descriptor)
{
}

Client::~Client() = default;

std::unique_ptr<OutgoingRequest> Client::createRequest() const
{
    auto request = std::make_unique<OutgoingRequest>(std::make_unique<OutgoingData>());
    InterfaceToken::write(request->writer(), m_descriptor, sdkLevel());
    return request;
}

std::unique_ptr<IncomingReply> Client::transact(quint32 code, const OutgoingRequest &request,
                                                Status *status)
{
    // calls back into this process may end this client
    const std::shared_ptr<RemoteObject> object = m_object;
    std::unique_ptr<IncomingData> data;
    const Status result =
        object->process()->transact(object->handle(), code, 0, request.data(), &data);
    if (status != nullptr)
        *status = result;
    return data == nullptr ? nullptr : std::make_unique<IncomingReply>(std::move(data));
}

Status Client::transactOneWay(quint32 code, const OutgoingRequest &request)
{
    const std::shared_ptr<RemoteObject> object = m_object;
    return object->process()->transact(object->handle(), code, FlagOneWay, request.data());
}

} // namespace Binder
