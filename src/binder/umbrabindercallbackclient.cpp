#include "binder/umbrabindercallbackclient.h"

#include "binder/umbrabindertransaction.h"
#include "platform/binder/client.h"
#include "platform/binder/remoteobject.h"

#include <QPointer>

#include <utility>

UmbraBinderCallbackClient *
UmbraBinderCallbackClient::create(UmbraBinderCallbackClientListener *listener,
                                  std::shared_ptr<Binder::RemoteObject> object,
                                  const char *interfaceDescriptor, QObject *parent)
{
    if (object == nullptr)
        return nullptr;
    return new UmbraBinderCallbackClient(listener, std::move(object), interfaceDescriptor, parent);
}

UmbraBinderCallbackClient::UmbraBinderCallbackClient(UmbraBinderCallbackClientListener *listener,
                                                     std::shared_ptr<Binder::RemoteObject> object,
                                                     const char *interfaceDescriptor,
                                                     QObject *parent)
    : QObject(parent)
    , m_listener(listener)
    , m_remoteObject(std::move(object))
    , m_client(Binder::Client::create(m_remoteObject, interfaceDescriptor))
    , m_deathHandler(m_remoteObject->addDeathHandler([this] { onDeath(); }))
{
}

UmbraBinderCallbackClient::~UmbraBinderCallbackClient()
{
    m_client.reset();
    m_remoteObject->removeHandler(m_deathHandler);
}

UmbraBinderTransaction *UmbraBinderCallbackClient::createTransaction(quint32 code, bool oneWay)
{
    if (m_client == nullptr)
        return nullptr;
    auto *transaction = new UmbraBinderTransaction(m_client, code, oneWay, this);
    connect(this, &UmbraBinderCallbackClient::onConnectionChanged, transaction,
            &UmbraBinderTransaction::onConnectionChanged);
    return transaction;
}

void UmbraBinderCallbackClient::onDeath()
{
    m_client.reset();
    const QPointer<UmbraBinderCallbackClient> self(this);
    m_listener->onRemoteObjectDied(this);
    if (!self.isNull())
        Q_EMIT onConnectionChanged(false);
    // cppcheck-suppress duplicateCondition // the signal may have deleted it
    if (!self.isNull())
        deleteLater();
}
