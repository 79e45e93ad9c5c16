#include "binder/umbrabinderservice.h"

#include "binder/incomingcall.h"
#include "binder/sdklevelsource.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "runtime/logging.h"
#include "runtime/servicecontroller.h"

UmbraBinderService::UmbraBinderService(const char *serviceName, const char *interfaceDescriptor,
                                       const char *device, QObject *parent)
    : QObject(parent)
    , m_serviceName(serviceName)
    , m_interfaceDescriptor(interfaceDescriptor)
    , m_device(device)
{
    UmbraBinder::provideSdkLevel();
    const ServiceController *controller = ServiceController::instance();
    connect(controller, &ServiceController::serviceStateChanged, this,
            [this] { onServiceStateChanged(); });
    const QString state = controller->serviceState();
    if (state == QLatin1String("activating") || state == QLatin1String("active"))
        onServiceStateChanged(true);
}

UmbraBinderService::~UmbraBinderService()
{
    dropAll();
}

void UmbraBinderService::reset()
{
    dropAll();
}

void UmbraBinderService::dropAll()
{
    m_registration.reset();
    m_localObject.reset();
    m_serviceManager.reset();
    m_deviceMissing = false;
}

std::unique_ptr<Binder::OutgoingReply>
UmbraBinderService::handleTransaction(Binder::IncomingRequest &request, quint32 code, quint32 flags,
                                      Binder::Status *status)
{
    return UmbraBinder::serve(*m_localObject, request, code, flags, status,
                              [this](quint32 called, BinderParcel *in, BinderParcel *out) {
                                  return processRequest(called, in, out);
                              });
}

bool UmbraBinderService::processRequest(quint32 code, BinderParcel *request, BinderParcel *reply)
{
    Q_UNUSED(code)
    Q_UNUSED(request)
    Q_UNUSED(reply)
    qCCritical(serviceLog) << "ProcessRequest not implemented for " << m_serviceName;
    return false;
}

void UmbraBinderService::onServiceStateChanged(bool forceStartAttempt)
{
    const QString state = ServiceController::instance()->serviceState();
    // A device that was not there while the unit was activating may have come up with it.
    const bool retry = m_deviceMissing && state == QLatin1String("active");
    if (state == QLatin1String("activating") || retry || forceStartAttempt)
        registerService();
    else if (state == QLatin1String("deactivating"))
        reset();
}

void UmbraBinderService::registerService()
{
    if (m_serviceManager != nullptr && m_serviceManager->isLost())
        dropAll();
    if (m_serviceManager == nullptr)
        m_serviceManager = Binder::ServiceManager::open(m_device);
    m_deviceMissing = m_serviceManager == nullptr;
    if (m_deviceMissing) {
        qCWarning(serviceLog) << "Unable to find Umbra service manager for" << m_serviceName;
        return;
    }
    if (m_localObject == nullptr) {
        m_localObject = m_serviceManager->createLocalObject(
            m_interfaceDescriptor, [this](Binder::IncomingRequest &request, quint32 code,
                                          quint32 flags, Binder::Status *status) {
                return handleTransaction(request, code, flags, status);
            });
    }
    if (m_registration == nullptr && m_localObject != nullptr) {
        qCDebug(serviceLog) << "Registering Umbra service for" << m_serviceName;
        m_registration = m_serviceManager->registerName(m_serviceName, *m_localObject);
    }
}
