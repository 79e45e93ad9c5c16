#include "binder/umbrabindercallback.h"

#include "binder/incomingcall.h"
#include "platform/binder/servicemanager.h"

UmbraBinderCallback::UmbraBinderCallback(Binder::ServiceManager &serviceManager,
                                         const char *interfaceDescriptor,
                                         UmbraBinderCallbackHandler *handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
    , m_localObject(serviceManager.createLocalObject(
          interfaceDescriptor, [this](Binder::IncomingRequest &request, quint32 code, quint32 flags,
                                      Binder::Status *status) {
              return handleTransaction(request, code, flags, status);
          }))
{
}

UmbraBinderCallback::~UmbraBinderCallback() = default;

std::unique_ptr<Binder::OutgoingReply>
UmbraBinderCallback::handleTransaction(Binder::IncomingRequest &request, quint32 code,
                                       quint32 flags, Binder::Status *status)
{
    return UmbraBinder::serve(*m_localObject, request, code, flags, status,
                              [this](quint32 called, BinderParcel *in, BinderParcel *out) {
                                  return m_handler->processRequest(called, in, out);
                              });
}

void UmbraBinderCallback::onConnectionChanged(bool connected)
{
    if (!connected)
        m_localObject.reset();
}
