#pragma once

#include "platform/binder/types.h"

#include <QObject>

#include <memory>

namespace Binder {
class Client;
class RemoteObject;
} // namespace Binder

class UmbraBinderCallbackClient;
class UmbraBinderTransaction;

/// Is told when the process behind an UmbraBinderCallbackClient is gone.
class UmbraBinderCallbackClientListener
{
public:
    /// The callback client deletes itself afterwards.
    virtual void onRemoteObjectDied(UmbraBinderCallbackClient *client) = 0;
    virtual ~UmbraBinderCallbackClientListener() = default;
};

/// Calls an object that the runtime handed to the daemon, and follows its death.
class UmbraBinderCallbackClient : public QObject
{
    Q_OBJECT

public:
    /// Null when `object` is null. `listener` is not owned.
    static UmbraBinderCallbackClient *create(UmbraBinderCallbackClientListener *listener,
                                             std::shared_ptr<Binder::RemoteObject> object,
                                             const char *interfaceDescriptor,
                                             QObject *parent = nullptr);
    ~UmbraBinderCallbackClient() override;

    /// A new call of the object, child of this; null once the object is dead.
    UmbraBinderTransaction *createTransaction(quint32 code, bool oneWay);

Q_SIGNALS:
    /// False when the object has died; never true.
    void onConnectionChanged(bool connected);

private:
    UmbraBinderCallbackClient(UmbraBinderCallbackClientListener *listener,
                              std::shared_ptr<Binder::RemoteObject> object,
                              const char *interfaceDescriptor, QObject *parent);
    void onDeath();

    UmbraBinderCallbackClientListener *m_listener;
    std::shared_ptr<Binder::RemoteObject> m_remoteObject;
    std::shared_ptr<Binder::Client> m_client;
    Binder::HandlerId m_deathHandler;
};
