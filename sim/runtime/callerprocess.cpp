#include "runtime/callerprocess.h"

#include "runtime/answers.h"
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
constexpr quint32 AddService = 3;

constexpr int ServiceFlagsLevel = 28;
constexpr int CallsAtOnce = 16;

// Lives as long as nobody has called it for good.
class Mayfly : public BinderObject
{
public:
    std::optional<Answer> transact(const IncomingCall &) override
    {
        return statusAnswer(StatusUnknownTransaction);
    }
};

} // namespace

CallerProcess::CallerProcess(std::unique_ptr<BinderLoop> loop, const Options &options)
    : m_loop(std::move(loop))
    , m_options(options)
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
    const QString mayfly = request.value(QStringLiteral("mayfly")).toString();
    if (!mayfly.isEmpty()) {
        hatch(mayfly, request.value(QStringLiteral("count")).toInt());
        return;
    }
    ParcelWriter look;
    writeInterfaceToken(&look, QStringLiteral("android.os.IServiceManager"), m_options.sdk);
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
    const Parcel parcel = parcelOf(request);
    const auto code = quint32(request.value(QStringLiteral("code")).toDouble());
    m_loop->acquire(handle);
    if (request.value(QStringLiteral("oneway")).toBool()) {
        flood(handle, code, parcel, request.value(QStringLiteral("count")).toInt(1), StatusOk);
        return;
    }
    m_loop->send(handle, code, parcel, CallMode::TwoWay,
                 [this, handle](qint32 status, const Parcel &reply) {
                     m_loop->release(handle);
                     finish(status, reply);
                 });
}

// So many at once as fill a write; the last of them brings the next.
void CallerProcess::flood(quint32 handle, quint32 code, const Parcel &parcel, int count,
                          qint32 status)
{
    const int atOnce = qMin(count, CallsAtOnce);
    const auto worst = std::make_shared<qint32>(status);
    const auto unconfirmed = std::make_shared<int>(atOnce);
    for (int i = 0; i < atOnce; ++i) {
        m_loop->send(handle, code, parcel, CallMode::OneWay,
                     [=, rest = count - atOnce](qint32 sent, const Parcel &) {
                         if (sent != StatusOk)
                             *worst = sent;
                         if (--*unconfirmed > 0)
                             return;
                         if (rest > 0) {
                             flood(handle, code, parcel, rest, *worst);
                             return;
                         }
                         m_loop->release(handle);
                         finish(*worst, {});
                     });
    }
}

void CallerProcess::hatch(const QString &name, int count)
{
    static Mayfly mayfly;
    auto driver = Binder::Driver::open(m_options.device.constData());
    auto loop = driver == nullptr ? nullptr : std::make_unique<BinderLoop>(std::move(driver));
    if (loop == nullptr || !loop->start()) {
        finish(StatusFailedTransaction, {});
        return;
    }
    ParcelWriter registration;
    writeInterfaceToken(&registration, QStringLiteral("android.os.IServiceManager"), m_options.sdk);
    registration.string16(name);
    registration.localObject(loop->publish(&mayfly));
    registration.int32(0); // not for isolated processes
    if (m_options.sdk >= ServiceFlagsLevel)
        registration.int32(0);
    BinderLoop *newest = loop.get();
    BinderLoop *former = m_mayfly.release();
    m_mayfly = std::move(loop);
    newest->send(ServiceManagerHandle, AddService, registration.parcel(), CallMode::TwoWay,
                 [this, name, count, former](qint32 status, const Parcel &) {
                     if (former != nullptr)
                         former->deleteLater();
                     if (status != StatusOk || count <= 1)
                         finish(status, {});
                     else
                         QMetaObject::invokeMethod(
                             this, [this, name, count] { hatch(name, count - 1); },
                             Qt::QueuedConnection);
                 });
}

Parcel CallerProcess::parcelOf(const QJsonObject &request)
{
    ParcelWriter writer;
    writer.raw(QByteArray::fromHex(request.value(QStringLiteral("data")).toString().toLatin1()));
    writer.raw(QByteArray(request.value(QStringLiteral("zeros")).toInt(), '\0'));
    static Mayfly mayfly;
    for (int i = request.value(QStringLiteral("objects")).toInt(); i > 0; --i)
        writer.localObject(m_loop->publish(&mayfly));
    for (int i = request.value(QStringLiteral("files")).toInt(); i > 0; --i)
        writer.file(STDERR_FILENO);
    return writer.parcel();
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
