#include "binder/umbrabindertransaction.h"

#include "binder/logging.h"
#include "platform/binder/client.h"

#include <QPointer>

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
    // While the runtime answers it may call handlers of ours that end the connection, and this
    // object with it: keep what is needed until the call is back.
    const std::shared_ptr<Binder::Client> client = m_client;
    const std::shared_ptr<Binder::OutgoingRequest> request = m_request;
    const QPointer<UmbraBinderTransaction> self(this);
    if (client == nullptr || m_executed)
        return -1;
    m_executed = true;
    if (m_oneWay)
        return client->transactOneWay(m_code, *request);

    Binder::Status status = -1;
    std::unique_ptr<Binder::IncomingReply> reply = client->transact(m_code, *request, &status);
    if (reply == nullptr) {
        qCDebug(binderLog) << "No reply available";
    } else if (!self.isNull()) {
        m_reply = std::move(reply);
        m_replyParcel = BinderParcel(*m_reply);
    }
    return status;
}

void UmbraBinderTransaction::onConnectionChanged(bool connected)
{
    if (!connected)
        m_client.reset();
}
