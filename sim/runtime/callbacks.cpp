#include "runtime/callbacks.h"

#include "runtime/interfacetoken.h"
#include "runtime/parcelwriter.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcCallbacks, "sim.runtime.callbacks")

namespace SimRuntime {

namespace {

QString descriptorOf(CallbackKind kind)
{
    switch (kind) {
    case CallbackKind::InstallObserver:
        return QStringLiteral("android.content.pm.IPackageInstallObserver2");
    case CallbackKind::DeleteObserver:
        return QStringLiteral("android.content.pm.IPackageDeleteObserver");
    case CallbackKind::DataObserver:
        return QStringLiteral("android.content.pm.IPackageDataObserver");
    case CallbackKind::AppListener:
        return QStringLiteral("umbra.applications.IUmbraServiceListener");
    }
    return {};
}

} // namespace

uint qHash(CallbackKind kind, uint seed)
{
    return ::qHash(int(kind), seed);
}

Callbacks::Callbacks(BinderLoop *loop, int sdk)
    : m_loop(loop)
    , m_sdk(sdk)
{
}

std::shared_ptr<RemoteObject> Callbacks::keep(CallbackKind kind, const ObjectReference &reference)
{
    auto object = RemoteObject::hold(m_loop, reference);
    if (object != nullptr)
        m_last.insert(kind, object);
    return object;
}

ParcelWriter Callbacks::request(CallbackKind kind) const
{
    ParcelWriter writer;
    writeInterfaceToken(&writer, descriptorOf(kind), m_sdk);
    return writer;
}

void Callbacks::call(const std::shared_ptr<RemoteObject> &object, quint32 code,
                     const ParcelWriter &request)
{
    if (object == nullptr)
        return;
    object->call(code, request.parcel(), [code](qint32 status) {
        if (status != StatusOk)
            qCWarning(lcCallbacks) << "Callback" << code << "failed with status" << status;
    });
}

} // namespace SimRuntime
