#pragma once

#include "platform/binder/localobject.h"

#include <QObject>

#include <memory>

class BinderParcel;

namespace Binder {
class ServiceManager;
} // namespace Binder

/// Serves the calls of an UmbraBinderCallback; see UmbraBinder::ProcessRequest.
class UmbraBinderCallbackHandler
{
public:
    virtual ~UmbraBinderCallbackHandler() = default;
    virtual bool processRequest(quint32 code, BinderParcel *request, BinderParcel *reply) = 0;
};

/// An anonymous local object, handed to the runtime inside a request so that it can call back.
class UmbraBinderCallback : public QObject
{
    Q_OBJECT

public:
    /// `handler` is not owned and must outlive the callback.
    UmbraBinderCallback(Binder::ServiceManager &serviceManager, const char *interfaceDescriptor,
                        UmbraBinderCallbackHandler *handler, QObject *parent = nullptr);
    ~UmbraBinderCallback() override;

    /// To be written into the request; null once the connection has gone down.
    const Binder::LocalObject *localObject() const { return m_localObject.get(); }

public Q_SLOTS:
    /// Drops the local object when the connection goes down.
    void onConnectionChanged(bool connected);

private:
    std::unique_ptr<Binder::OutgoingReply> handleTransaction(Binder::IncomingRequest &request,
                                                             quint32 code, quint32 flags,
                                                             Binder::Status *status);

    UmbraBinderCallbackHandler *m_handler;
    std::unique_ptr<Binder::LocalObject> m_localObject;
};
