#pragma once

#include "platform/binder/localobject.h"

#include <QObject>

#include <memory>

class BinderParcel;

namespace Binder {
class ServiceManager;
class ServiceName;
} // namespace Binder

/// A binder object of the daemon that is registered by name with the runtime's service manager.
///
/// It is registered as soon as the runtime's unit is activating, so that the runtime's apps find
/// it when they come up, and dropped when the unit is deactivating.
class UmbraBinderService : public QObject
{
    Q_OBJECT

public:
    /// The strings must outlive the service; callers pass literals.
    UmbraBinderService(const char *serviceName, const char *interfaceDescriptor, const char *device,
                       QObject *parent = nullptr);
    ~UmbraBinderService() override;

    /// Drops the registration, the object and the service manager.
    virtual void reset();

    /// Serves one incoming call; see Binder::IncomingCall.
    virtual std::unique_ptr<Binder::OutgoingReply>
    handleTransaction(Binder::IncomingRequest &request, quint32 code, quint32 flags,
                      Binder::Status *status);

    /// The service's own logic; see UmbraBinder::ProcessRequest. Must not block for long.
    virtual bool processRequest(quint32 code, BinderParcel *request, BinderParcel *reply);

public Q_SLOTS:
    /// `forceStartAttempt` registers whatever the unit's state is.
    void onServiceStateChanged(bool forceStartAttempt = false);

private:
    void registerService();
    void dropAll();

    const char *m_serviceName;
    const char *m_interfaceDescriptor;
    const char *m_device;
    std::unique_ptr<Binder::ServiceManager> m_serviceManager;
    std::unique_ptr<Binder::LocalObject> m_localObject;
    std::unique_ptr<Binder::ServiceName> m_registration;
    bool m_deviceMissing = false;
};
