#include "platform/binder/contextmanager.h"

#include "platform/binder/incomingdata.h"
#include "platform/binder/interfacetoken.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/process.h"
#include "platform/binder/reader.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/sdklevel.h"
#include "platform/binder/standardtransaction.h"

namespace Binder {
namespace ContextManager {

namespace {

enum Code : quint32 { CheckService = 2, AddService = 3 };

constexpr int DumpFlagsSdkLevel = 28;
constexpr qint32 DisallowIsolated = 0;
constexpr qint32 DefaultDumpFlags = 8;

OutgoingData newRequest()
{
    OutgoingData request;
    InterfaceToken::write(Writer(&request), QByteArrayLiteral("android.os.IServiceManager"),
                          sdkLevel());
    return request;
}

} // namespace

Status ping(Process &process)
{
    return process.transact(ContextManagerHandle, PingTransaction, 0, OutgoingData());
}

Status checkService(Process &process, const QByteArray &name, std::shared_ptr<RemoteObject> *object)
{
    OutgoingData request = newRequest();
    Writer(&request).appendString16(name.constData());

    std::unique_ptr<IncomingData> reply;
    const Status status = process.transact(ContextManagerHandle, CheckService, 0, request, &reply);
    if (status != StatusOk)
        return status;
    object->reset(); // "not found" is a reply without an object
    Reader(reply.get()).readNullableObject(object);
    return StatusOk;
}

Status addService(Process &process, const QByteArray &name, quint64 object)
{
    OutgoingData request = newRequest();
    Writer writer(&request);
    writer.appendString16(name.constData());
    request.appendObject(object);
    writer.appendInt32(DisallowIsolated);
    // while the level is unknown the word is written too: who does not expect it ignores it
    if (const int level = sdkLevel(); level == 0 || level >= DumpFlagsSdkLevel)
        writer.appendInt32(DefaultDumpFlags);
    return process.transact(ContextManagerHandle, AddService, 0, request);
}

} // namespace ContextManager
} // namespace Binder
