#include "runtime/contextmanager.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcNames, "sim.runtime.names")

namespace SimRuntime {

namespace {

constexpr int LongestName = 127;
constexpr quint32 UsersRange = 100000; // uids of one Android user
constexpr quint32 FirstAppUid = 10000;

constexpr int DumpFlagsLevel = 28;

QVector<Field> withDumpFlags(QVector<Field> fields, int sdk)
{
    if (sdk >= DumpFlagsLevel)
        fields.append({"dumpFlags", FieldKind::Int32});
    return fields;
}

} // namespace

ContextManager::ContextManager(const ServiceEnvironment &environment, QObject *parent)
    : QObject(parent)
    , Service(environment, QStringLiteral("servicemanager"),
              QStringLiteral("android.os.IServiceManager"))
{
    const auto look = [this](const Request &request) { return find(request.string("name")); };
    add({"getService", everyLevel(1), {{"name", FieldKind::String}}, look});
    add({"checkService", everyLevel(2), {{"name", FieldKind::String}}, look});
    add({"addService", everyLevel(3),
         withDumpFlags({{"name", FieldKind::String},
                        {"service", FieldKind::Object},
                        {"allowIsolated", FieldKind::Int32}},
                       environment.sdk),
         [this](const Request &request) { return addService(request); }});
    add({"listServices", everyLevel(4),
         withDumpFlags({{"index", FieldKind::Int32}}, environment.sdk),
         [this](const Request &request) { return listServices(request.int32("index")); }});
}

ContextManager::~ContextManager() = default;

void ContextManager::addOwn(const QString &name, quint64 objectId)
{
    Registration registration;
    registration.object.kind = ObjectReference::Kind::Local;
    registration.object.id = objectId;
    m_names.insert(name, registration);
}

void ContextManager::hold(const QString &name)
{
    m_held.insert(name);
}

void ContextManager::releaseName(const QString &name)
{
    m_held.remove(name);
}

Answer ContextManager::find(const QString &name) const
{
    const auto registration = m_names.constFind(name);
    if (registration == m_names.constEnd() || m_held.contains(name))
        return plainInt32Answer(0);
    ParcelWriter writer;
    if (registration->object.kind == ObjectReference::Kind::Local)
        writer.localObject(registration->object.id);
    else
        writer.remoteObject(registration->object.handle);
    return {StatusOk, writer.parcel()};
}

Answer ContextManager::addService(const Request &request)
{
    const QString name = request.string("name");
    const ObjectReference object = request.object("service");
    if (name.isEmpty() || name.size() > LongestName ||
        object.kind != ObjectReference::Kind::Remote ||
        currentCall().uid % UsersRange >= FirstAppUid) {
        qCWarning(lcNames) << "Refused to register" << name << "for uid" << currentCall().uid;
        return statusAnswer(StatusPermissionDenied);
    }
    // The new reference comes before the old one goes: both may be the same handle.
    environment().loop->acquire(object.handle);
    forget(name);
    Registration registration;
    registration.object = object;
    registration.watch = environment().loop->watch(object.handle, [this, name] {
        qCInfo(lcNames) << "The process that registered" << name << "is gone";
        forget(name);
    });
    m_names.insert(name, registration);
    QMetaObject::invokeMethod(
        this, [this, name] { Q_EMIT added(name); }, Qt::QueuedConnection);
    return plainInt32Answer(0);
}

Answer ContextManager::listServices(int index) const
{
    if (index < 0 || index >= m_names.size())
        return statusAnswer(StatusPermissionDenied);
    ParcelWriter writer;
    writer.string16(m_names.keys().at(index));
    return {StatusOk, writer.parcel()};
}

void ContextManager::forget(const QString &name)
{
    const auto registration = m_names.find(name);
    if (registration == m_names.end())
        return;
    const Registration old = *registration;
    m_names.erase(registration);
    if (old.object.kind != ObjectReference::Kind::Remote)
        return;
    environment().loop->unwatch(old.watch);
    environment().loop->release(old.object.handle);
}

Answer ContextManager::answerToPing() const
{
    return {};
}

Answer ContextManager::answerToWrongToken() const
{
    return statusAnswer(StatusPermissionDenied);
}

Answer ContextManager::answerToUnknownCode() const
{
    return statusAnswer(StatusPermissionDenied);
}

Answer ContextManager::answerToBadRequest() const
{
    return statusAnswer(StatusPermissionDenied);
}

} // namespace SimRuntime
