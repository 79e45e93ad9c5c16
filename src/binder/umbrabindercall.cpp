#include "binder/umbrabindercall.h"

#include "binder/umbrabinderconnection.h"
#include "platform/binder/client.h"

UmbraBinderCall::UmbraBinderCall(UmbraBinderConnection &connection)
    : m_client(connection.client())
{
    if (m_client == nullptr)
        return;
    m_request = m_client->createRequest();
    m_fields = BinderParcel(*m_request);
}

UmbraBinderCall::~UmbraBinderCall() = default;

std::unique_ptr<Binder::IncomingReply> UmbraBinderCall::send(quint32 code, Binder::Status *status)
{
    if (isPossible())
        return m_client->transact(code, *m_request, status);
    if (status != nullptr)
        *status = Binder::StatusDeadObject;
    return nullptr;
}
