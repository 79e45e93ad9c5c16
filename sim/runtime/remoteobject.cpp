#include "runtime/remoteobject.h"

namespace SimRuntime {

std::shared_ptr<RemoteObject> RemoteObject::hold(BinderLoop *loop, const ObjectReference &reference)
{
    if (reference.kind != ObjectReference::Kind::Remote)
        return nullptr;
    return std::shared_ptr<RemoteObject>(new RemoteObject(loop, reference.handle));
}

RemoteObject::RemoteObject(BinderLoop *loop, quint32 handle)
    : m_loop(loop)
    , m_handle(handle)
{
    loop->acquire(handle);
}

RemoteObject::~RemoteObject()
{
    if (m_loop)
        m_loop->release(m_handle);
}

void RemoteObject::call(quint32 code, const Parcel &parcel,
                        std::function<void(qint32 status)> completion)
{
    if (!m_loop) {
        completion(StatusDeadObject);
        return;
    }
    m_loop->send(m_handle, code, parcel, CallMode::OneWay,
                 [done = std::move(completion)](qint32 status, const Parcel &) { done(status); });
}

} // namespace SimRuntime
