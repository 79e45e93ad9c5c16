#include "binder/umbrabindertransaction.h"

#include "binder/logging.h"
#include "platform/binder/client.h"

#include <utility>

UmbraBinderTransaction::UmbraBinderTransaction(std::shared_ptr<Binder::Client> client, quint32 code,
                                               bool oneWay, QObject *parent)
    : QObject(parent)
    , m_client(std::move(client))
    , m_code(code)
    , m_oneWay(oneWay)
    , m_request(m_client->createRequest())
    , m_requestParcel(*m_request)
{
}

UmbraBinderTransaction::~UmbraBinderTransaction()
{
    qCDebug(binderLog) << "Destroying transaction" << m_code;
}

qint32 UmbraBinderTransaction::execute()
{
    // The call may run handlers that end the connection: keep the client until it is back.
    const std::shared_ptr<Binder::Client> client = m_client;
    if (client == nullptr || m_executed)
        return -1;
    m_executed = true;
    if (m_oneWay)
        return client->transactOneWay(m_code, *m_request);

    Binder::Status status = -1;
    m_reply = client->transact(m_code, *m_request, &status);
    if (m_reply != nullptr)
        m_replyParcel = BinderParcel(*m_reply);
    else
        qCDebug(binderLog) << "No reply available";
    return status;
}

void UmbraBinderTransaction::onConnectionChanged(bool connected)
{
    if (!connected)
        m_client.reset();
}
