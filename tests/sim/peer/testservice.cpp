#include "sim/peer/testservice.h"

#include "platform/binder/client.h"
#include "platform/binder/remoteobject.h"

#include <unistd.h>

using namespace Binder;

namespace {

// Calls Echo of an object with a number; the number that comes back, −1 when none does.
qint32 callEcho(const std::shared_ptr<RemoteObject> &object, qint32 number)
{
    const auto client = Client::create(object, TestService::ObjectDescriptor);
    if (client == nullptr)
        return -1;
    const auto request = client->createRequest();
    request->writer().appendInt32(number);
    const auto reply = client->transact(TestService::Echo, *request);
    qint32 result = -1;
    if (reply != nullptr)
        reply->readInt32(&result);
    return result;
}

} // namespace

TestService::TestService(const char *device, const char *name)
    : m_manager(ServiceManager::open(device))
{
    if (m_manager == nullptr)
        return;
    m_object = m_manager->createLocalObject(
        Descriptor, [this](IncomingRequest &request, quint32 code, quint32, Status *status) {
            return serve(request, code, status);
        });
    m_name = m_manager->registerName(name, *m_object);
}

std::unique_ptr<OutgoingReply> TestService::serve(IncomingRequest &request, quint32 code,
                                                  Status *status)
{
    Reader reader = request.reader();
    auto reply = m_object->createReply();
    switch (code) {
    case Echo: {
        const char *bytes = nullptr;
        int size = 0;
        if (!reader.readByteArray(&bytes, &size))
            break;
        reply->writer().appendByteArray(QByteArray(bytes, size));
        return reply;
    }
    case CallBack:
        reply->writer().appendInt32(callBack(reader));
        return reply;
    case Count: {
        qint32 number = 0;
        reader.readInt32(&number);
        ++m_count;
        if (number != m_count)
            ++m_outOfOrder;
        return nullptr;
    }
    case Counted:
        reply->writer().appendInt32(m_count);
        reply->writer().appendInt32(m_outOfOrder);
        return reply;
    case Flood:
        reply->writer().appendInt32(flood(reader));
        return reply;
    case CallName:
        reply->writer().appendInt32(callName(reader));
        return reply;
    case Die:
        ::_exit(0);
    default:
        break;
    }
    *status = StatusRefused;
    return nullptr;
}

qint32 TestService::callBack(Reader &reader)
{
    std::shared_ptr<RemoteObject> object;
    qint32 levels = 0;
    if (!reader.readNullableObject(&object) || !reader.readInt32(&levels))
        return -1;
    return callEcho(object, levels);
}

qint32 TestService::callName(Reader &reader) const
{
    const char *name = nullptr;
    int size = 0;
    qint32 number = 0;
    if (!reader.readByteArray(&name, &size) || !reader.readInt32(&number))
        return -1;
    return callEcho(m_manager->getService(QByteArray(name, size).constData()), number);
}

qint32 TestService::flood(Reader &reader)
{
    std::shared_ptr<RemoteObject> object;
    qint32 count = 0;
    if (!reader.readNullableObject(&object) || !reader.readInt32(&count))
        return -1;
    const auto client = Client::create(object, ObjectDescriptor);
    if (client == nullptr)
        return -1;
    qint32 failures = 0;
    for (qint32 number = 1; number <= count; ++number) {
        const auto request = client->createRequest();
        request->writer().appendInt32(number);
        if (client->transactOneWay(Count, *request) != StatusOk)
            ++failures;
    }
    return failures;
}
