#include "runtime/callerprocess.h"

#include "runtime/interfacetoken.h"
#include "runtime/parcelreader.h"
#include "runtime/parcelwriter.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace SimRuntime {

namespace {

constexpr quint32 ServiceManagerHandle = 0;
constexpr quint32 CheckService = 2;

} // namespace

CallerProcess::CallerProcess(std::unique_ptr<BinderLoop> loop, int sdk)
    : m_loop(std::move(loop))
    , m_sdk(sdk)
    , m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_input, &QSocketNotifier::activated, this, &CallerProcess::read);
    connect(m_loop.get(), &BinderLoop::lost, this, [] { QCoreApplication::exit(1); });
}

void CallerProcess::read()
{
    char buffer[65536];
    const ssize_t size = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (size < 0 && errno == EINTR)
        return;
    if (size <= 0) {
        QCoreApplication::quit();
        return;
    }
    m_received.append(buffer, int(size));
    for (int end = m_received.indexOf('\n'); end >= 0; end = m_received.indexOf('\n')) {
        m_waiting.enqueue(QJsonDocument::fromJson(m_received.left(end)).object());
        m_received.remove(0, end + 1);
    }
    next();
}

void CallerProcess::next()
{
    if (m_busy || m_waiting.isEmpty())
        return;
    m_busy = true;
    const QJsonObject request = m_waiting.head();
    ParcelWriter look;
    writeInterfaceToken(&look, QStringLiteral("android.os.IServiceManager"), m_sdk);
    look.string16(request.value(QStringLiteral("service")).toString());
    m_loop->send(ServiceManagerHandle, CheckService, look.parcel(), CallMode::TwoWay,
                 [this, request](qint32 status, const Parcel &reply) {
                     const ObjectReference service = ParcelReader(reply).object();
                     if (status != StatusOk)
                         finish(status, {});
                     else if (service.kind != ObjectReference::Kind::Remote)
                         finish(StatusNameNotFound, {});
                     else
                         call(request, service.handle);
                 });
}

void CallerProcess::call(const QJsonObject &request, quint32 handle)
{
    Parcel parcel;
    parcel.data = QByteArray::fromHex(request.value(QStringLiteral("data")).toString().toLatin1());
    m_loop->acquire(handle);
    m_loop->send(handle, quint32(request.value(QStringLiteral("code")).toDouble()), parcel,
                 request.value(QStringLiteral("oneway")).toBool() ? CallMode::OneWay
                                                                  : CallMode::TwoWay,
                 [this, handle](qint32 status, const Parcel &reply) {
                     m_loop->release(handle);
                     finish(status, reply);
                 });
}

void CallerProcess::finish(qint32 status, const Parcel &reply)
{
    const QJsonObject answer{
        {QStringLiteral("id"), m_waiting.dequeue().value(QStringLiteral("id"))},
        {QStringLiteral("status"), status},
        {QStringLiteral("reply"), QString::fromLatin1(reply.data.toHex())},
    };
    const QByteArray line = QJsonDocument(answer).toJson(QJsonDocument::Compact) + '\n';
    fwrite(line.constData(), 1, size_t(line.size()), stdout);
    fflush(stdout);
    m_busy = false;
    // Not from here: the loop is still handling what ended this call.
    QMetaObject::invokeMethod(this, &CallerProcess::next, Qt::QueuedConnection);
}

} // namespace SimRuntime
