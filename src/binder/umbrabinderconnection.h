#pragma once

#include "platform/binder/types.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace Binder {
class Client;
class RemoteObject;
class ServiceManager;
} // namespace Binder

class UmbraBinderCallback;
class UmbraBinderCallbackHandler;
class UmbraBinderTransaction;

/// The daemon's handle on one named Android system service inside the runtime.
///
/// It follows the runtime's unit: connects when the unit becomes active and drops everything when
/// it is deactivating. A persistent connection waits for the service to be registered, stays
/// connected and reconnects after the service's death. A non-persistent one looks the service up
/// when client() is asked for it and lets go of it IdleTimeoutMs after it was connected.
class UmbraBinderConnection : public QObject
{
    Q_OBJECT

public:
    static constexpr int IdleTimeoutMs = 5000;

    /// Both strings must outlive the connection; callers pass literals.
    UmbraBinderConnection(const char *serviceName, const char *interfaceDescriptor, bool persistent,
                          QObject *parent = nullptr);
    ~UmbraBinderConnection() override;

    /// The client for the service, or null when the runtime or the service is not there. May look
    /// the service up first, which blocks until the runtime's service manager answers.
    ///
    /// The client is shared, because a handler that runs inside a call may end the connection:
    /// hold it until the call has returned.
    std::shared_ptr<Binder::Client> client();

    /// Not from the moment on when the driver refuses a call because the service is gone, which can
    /// be earlier than the notice of its death. So a call that does not leave the connection up has
    /// never reached anybody. One that does has been sent, if not answered, unless the driver had
    /// another reason to refuse it, such as its size.
    bool isConnected() const;
    const char *name() const { return m_serviceName; }

    /// A new call of the service, child of the connection; null when there is no client().
    UmbraBinderTransaction *createTransaction(quint32 code, bool oneWay);

    /// A new local object that the service can call, child of the connection; null when the
    /// connection has no client. `handler` is not owned.
    UmbraBinderCallback *createCallback(const char *interfaceDescriptor,
                                        UmbraBinderCallbackHandler *handler);

Q_SIGNALS:
    /// True after a successful lookup; false after every teardown, whether or not there was
    /// anything to tear down. The destructor tears down too: a derived class that listens to its
    /// own connection must stop listening in its destructor.
    void connectionChanged(bool connected);

public Q_SLOTS:
    void onServiceStateChanged();
    void onTimeout();

protected:
    /// Null while the unit is not active.
    Binder::ServiceManager *serviceManager() const { return m_serviceManager.get(); }

private:
    enum class KeepServiceManager { No, Yes };

    void connectToService();
    void lookUp();
    /// False when those who were told of it have deleted the connection.
    bool tearDown(KeepServiceManager keep);
    void releaseRemoteObject();
    void removeRegistrationHandler();
    void onDeath();

    const char *m_serviceName;
    const char *m_interfaceDescriptor;
    bool m_persistent;
    std::shared_ptr<Binder::ServiceManager> m_serviceManager;
    Binder::HandlerId m_registrationHandler = Binder::NoHandler;
    std::shared_ptr<Binder::RemoteObject> m_remoteObject;
    Binder::HandlerId m_deathHandler = Binder::NoHandler;
    std::shared_ptr<Binder::Client> m_client;
    QTimer m_idleTimer;
    bool m_tearingDown = false;
};
