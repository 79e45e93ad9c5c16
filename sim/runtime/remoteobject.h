#pragma once

#include "runtime/binderloop.h"
#include "runtime/parcel.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

namespace SimRuntime {

/// An object of another process, held for as long as this lives.
class RemoteObject
{
public:
    /// Null when the reference is not to an object of another process. To be called while the
    /// request that carries the reference is being served.
    static std::shared_ptr<RemoteObject> hold(BinderLoop *loop, const ObjectReference &reference);
    ~RemoteObject();
    RemoteObject(const RemoteObject &) = delete;
    RemoteObject &operator=(const RemoteObject &) = delete;

    quint32 handle() const { return m_handle; }

    /// Sends a one-way call; `parcel` is the whole request.
    void call(quint32 code, const Parcel &parcel, std::function<void(qint32 status)> completion);

private:
    RemoteObject(BinderLoop *loop, quint32 handle);

    QPointer<BinderLoop> m_loop;
    quint32 m_handle;
};

} // namespace SimRuntime
