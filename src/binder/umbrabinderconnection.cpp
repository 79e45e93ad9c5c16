#include "binder/umbrabinderconnection.h"

#include "binder/device.h"
#include "binder/logging.h"
#include "binder/sdklevelsource.h"
#include "binder/umbrabindercallback.h"
#include "binder/umbrabindertransaction.h"
#include "platform/binder/client.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicemanager.h"
#include "runtime/servicecontroller.h"

#include <QPointer>

UmbraBinderConnection::UmbraBinderConnection(const char *serviceName,
                                             const char *interfaceDescriptor, bool persistent,
                                             QObject *parent)
    : QObject(parent)
    , m_serviceName(serviceName)
    , m_interfaceDescriptor(interfaceDescriptor)
    , m_persistent(persistent)
{
    UmbraBinder::provideSdkLevel();
    m_idleTimer.setSingleShot(true);
    m_idleTimer.setInterval(IdleTimeoutMs);
    connect(ServiceController::instance(), &ServiceController::serviceStateChanged, this,
            &UmbraBinderConnection::onServiceStateChanged);
    connect(&m_idleTimer, &QTimer::timeout, this, &UmbraBinderConnection::onTimeout);
    onServiceStateChanged();
}

UmbraBinderConnection::~UmbraBinderConnection()
{
    qCDebug(binderLog) << "Destroying" << m_serviceName << "connection";
    tearDown(KeepServiceManager::No);
}

std::shared_ptr<Binder::Client> UmbraBinderConnection::client()
{
    // Those who are just being told that the connection went down must not bring it up again.
    if (m_client != nullptr || m_serviceManager == nullptr || m_tearingDown)
        return m_client;
    const QPointer<UmbraBinderConnection> self(this);
    lookUp();
    return self.isNull() ? nullptr : m_client;
}

bool UmbraBinderConnection::isConnected() const
{
    return m_client != nullptr && m_remoteObject != nullptr && !m_remoteObject->isKnownDead();
}

UmbraBinderTransaction *UmbraBinderConnection::createTransaction(quint32 code, bool oneWay)
{
    const std::shared_ptr<Binder::Client> current = client();
    if (current == nullptr)
        return nullptr;
    auto *transaction = new UmbraBinderTransaction(current, code, oneWay, this);
    connect(this, &UmbraBinderConnection::connectionChanged, transaction,
            &UmbraBinderTransaction::onConnectionChanged);
    return transaction;
}

UmbraBinderCallback *UmbraBinderConnection::createCallback(const char *interfaceDescriptor,
                                                           UmbraBinderCallbackHandler *handler)
{
    if (m_client == nullptr || m_serviceManager == nullptr)
        return nullptr;
    auto *callback = new UmbraBinderCallback(*m_serviceManager, interfaceDescriptor, handler, this);
    connect(this, &UmbraBinderConnection::connectionChanged, callback,
            &UmbraBinderCallback::onConnectionChanged);
    return callback;
}

void UmbraBinderConnection::onServiceStateChanged()
{
    const QString state = ServiceController::instance()->serviceState();
    if (state == QLatin1String("active"))
        connectToService();
    else if (state == QLatin1String("deactivating"))
        tearDown(KeepServiceManager::No);
}

void UmbraBinderConnection::onTimeout()
{
    qCDebug(binderLog) << "Timing out" << m_serviceName;
    tearDown(KeepServiceManager::Yes);
}

void UmbraBinderConnection::connectToService()
{
    if (m_serviceManager != nullptr && m_serviceManager->isLost()) {
        releaseRemoteObject();
        removeRegistrationHandler();
        m_serviceManager.reset();
    }
    if (m_serviceManager == nullptr)
        m_serviceManager = Binder::ServiceManager::open(UmbraBinder::Device);
    if (m_serviceManager == nullptr) {
        qCCritical(binderLog) << "Could not get service manager for" << m_serviceName;
        tearDown(KeepServiceManager::Yes);
        return;
    }
    if (m_persistent && m_registrationHandler == Binder::NoHandler) {
        qCDebug(binderLog) << "Connecting to Umbra service:" << m_serviceName;
        m_registrationHandler =
            m_serviceManager->addRegistrationHandler(m_serviceName, [this] { lookUp(); });
        lookUp();
    }
}

void UmbraBinderConnection::lookUp()
{
    // While the service manager is asked, the runtime may call handlers of ours that end this
    // connection.
    const QPointer<UmbraBinderConnection> self(this);
    const std::shared_ptr<Binder::ServiceManager> serviceManager = m_serviceManager;
    std::shared_ptr<Binder::RemoteObject> object = serviceManager->getService(m_serviceName);
    if (self.isNull() || serviceManager != m_serviceManager)
        return;
    if (object == nullptr) {
        qCDebug(binderLog) << "Could not find remote object for" << m_serviceName;
        return;
    }
    releaseRemoteObject(); // a unit that was restarted can be "active" twice without an end between
    m_remoteObject = std::move(object);
    qCDebug(binderLog) << "Connected to Umbra Service" << m_serviceName;
    m_deathHandler = m_remoteObject->addDeathHandler([this] { onDeath(); });
    m_client = Binder::Client::create(m_remoteObject, m_interfaceDescriptor);
    if (m_client == nullptr) {
        qCDebug(binderLog) << "Could not create client for" << m_serviceName;
        tearDown(KeepServiceManager::Yes);
        return;
    }
    removeRegistrationHandler();
    if (!m_persistent)
        m_idleTimer.start();
    Q_EMIT connectionChanged(true);
}

bool UmbraBinderConnection::tearDown(KeepServiceManager keep)
{
    m_idleTimer.stop();
    m_client.reset();
    m_tearingDown = true;
    const QPointer<UmbraBinderConnection> self(this);
    Q_EMIT connectionChanged(false);
    if (self.isNull())
        return false;
    m_tearingDown = false;
    releaseRemoteObject();
    removeRegistrationHandler();
    if (keep == KeepServiceManager::No)
        m_serviceManager.reset();
    return true;
}

void UmbraBinderConnection::releaseRemoteObject()
{
    if (m_remoteObject == nullptr)
        return;
    m_remoteObject->removeHandler(m_deathHandler);
    m_deathHandler = Binder::NoHandler;
    m_remoteObject.reset();
}

void UmbraBinderConnection::removeRegistrationHandler()
{
    if (m_registrationHandler == Binder::NoHandler)
        return;
    m_serviceManager->removeHandler(m_registrationHandler);
    m_registrationHandler = Binder::NoHandler;
}

void UmbraBinderConnection::onDeath()
{
    qCWarning(binderLog) << m_serviceName << "died! Trying to reconnect.";
    if (tearDown(KeepServiceManager::Yes))
        connectToService();
}
