#pragma once

#include "runtime/remoteobject.h"

#include <QHash>
#include <QString>

#include <memory>

namespace SimRuntime {

class ParcelWriter;

enum class CallbackKind { InstallObserver, DeleteObserver, DataObserver, AppListener };

uint qHash(CallbackKind kind, uint seed = 0);

/// Objects that callers handed over to be called back through. The last of each kind is kept, so
/// that it can be called at any time.
class Callbacks
{
public:
    Callbacks(BinderLoop *loop, int sdk);

    /// Takes over the object of a request being served. Null when it is the null object.
    std::shared_ptr<RemoteObject> keep(CallbackKind kind, const ObjectReference &reference);

    /// The object kept last; null when there was none or its process is gone.
    std::shared_ptr<RemoteObject> last(CallbackKind kind) const { return m_last.value(kind); }

    /// A request that begins with the interface token of this kind.
    ParcelWriter request(CallbackKind kind) const;

    /// Calls an object, one-way. A null object is not called; a failure is logged.
    void call(const std::shared_ptr<RemoteObject> &object, quint32 code,
              const ParcelWriter &request);

private:
    BinderLoop *m_loop;
    int m_sdk;
    QHash<CallbackKind, std::shared_ptr<RemoteObject>> m_last;
};

} // namespace SimRuntime
