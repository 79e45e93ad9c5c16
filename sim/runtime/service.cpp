#include "runtime/service.h"

#include "runtime/interfacetoken.h"

#include <QTimer>

#include <csignal>
#include <linux/android/binder.h>
#include <unistd.h>

namespace SimRuntime {

namespace {

// Standard transactions (AOSP frameworks/native, IBinder.h) carry no interface token.
constexpr quint32 Ping = B_PACK_CHARS('_', 'P', 'N', 'G');
constexpr quint32 Interface = B_PACK_CHARS('_', 'N', 'T', 'F');
constexpr quint32 Dump = B_PACK_CHARS('_', 'D', 'M', 'P');
constexpr quint32 ShellCommand = B_PACK_CHARS('_', 'C', 'M', 'D');
constexpr quint32 SystemProperties = B_PACK_CHARS('_', 'S', 'P', 'R');

} // namespace

Service::Service(const ServiceEnvironment &environment, const QString &name,
                 const QString &descriptor)
    : m_environment(environment)
    , m_name(name)
    , m_descriptor(descriptor)
{
}

std::optional<Answer> Service::transact(const IncomingCall &call)
{
    std::optional<Answer> standard = answerStandard(call);
    if (standard) {
        m_environment.recorder->record(m_name, m_descriptor, call, {}, {}, {});
        return standard;
    }
    const std::function<Answer()> serve = prepare(call);
    const std::optional<Fault> fault = m_environment.faults->take(m_name, call.code);
    return fault ? misbehave(*fault, call, serve) : serve();
}

std::optional<Answer> Service::answerStandard(const IncomingCall &call) const
{
    switch (call.code) {
    case Ping:
        return answerToPing();
    case Interface: {
        ParcelWriter writer;
        writer.string16(m_descriptor);
        return Answer{StatusOk, writer.parcel()};
    }
    case Dump:
    case ShellCommand:
    case SystemProperties:
        return Answer{};
    default:
        return std::nullopt;
    }
}

// Decodes and records the call; what is returned carries it out.
std::function<Answer()> Service::prepare(const IncomingCall &call)
{
    ParcelReader reader(call.parcel);
    const QString descriptor = readInterfaceToken(&reader, m_environment.sdk);
    if (descriptor != m_descriptor) {
        const QString problem = QStringLiteral("wrong interface token");
        m_environment.recorder->record(m_name, m_descriptor, call, {}, {}, problem);
        return [this] { return answerToWrongToken(); };
    }
    for (const Method &method : qAsConst(m_methods)) {
        if (call.code != method.codes.at(m_environment.sdk))
            continue;
        const Request request = Request::read(&reader, method.fields, m_environment.sdk);
        m_environment.recorder->record(m_name, m_descriptor, call, QLatin1String(method.name),
                                       request.json(), reader.problem());
        if (reader.failed())
            return [this] { return answerToBadRequest(); };
        return [this, call, request, serve = method.serve] {
            m_currentCall = &call;
            Answer answer = serve(request);
            m_currentCall = nullptr;
            return answer;
        };
    }
    m_environment.recorder->record(m_name, m_descriptor, call, {}, {},
                                   QStringLiteral("unknown code"));
    return [this] { return answerToUnknownCode(); };
}

std::optional<Answer> Service::misbehave(const Fault &fault, const IncomingCall &call,
                                         const std::function<Answer()> &serve)
{
    switch (fault.kind) {
    case Fault::Kind::Refuse:
        return exceptionAnswer(fault.value == 0 ? ExceptionSecurity : fault.value,
                               QStringLiteral("Refused on demand"), m_environment.sdk);
    case Fault::Kind::Status:
        return statusAnswer(fault.value);
    case Fault::Kind::Short: {
        Answer answer = serve();
        answer.parcel.data.truncate(fault.value);
        answer.parcel.objects.clear();
        return answer;
    }
    case Fault::Kind::Long:
    case Fault::Kind::Objects:
    case Fault::Kind::Files: {
        Answer answer = serve();
        answer.parcel = withSurplus(fault, answer.parcel);
        return answer;
    }
    case Fault::Kind::Hang:
        // The driver keeps the request, and with it the handles in it, until it is answered.
        if (fault.value > 0 && !call.oneWay) {
            BinderLoop *loop = m_environment.loop;
            QTimer::singleShot(fault.value, loop, [loop, serve] { loop->answer(serve()); });
        }
        return std::nullopt;
    case Fault::Kind::Die:
        raise(SIGKILL);
        break;
    }
    return serve();
}

// What nobody asked for, behind what somebody did. It is this service that every object stands for.
Parcel Service::withSurplus(const Fault &fault, const Parcel &parcel)
{
    ParcelWriter writer;
    writer.append(parcel);
    if (fault.kind == Fault::Kind::Long)
        writer.raw(QByteArray(fault.value, '\xff'));
    for (int i = 0; fault.kind == Fault::Kind::Objects && i < fault.value; ++i)
        writer.localObject(m_environment.loop->publish(this));
    for (int i = 0; fault.kind == Fault::Kind::Files && i < fault.value; ++i)
        writer.file(STDERR_FILENO);
    return writer.parcel();
}

Answer Service::answerToPing() const
{
    return plainInt32Answer(0);
}

Answer Service::answerToWrongToken() const
{
    return exceptionAnswer(ExceptionSecurity,
                           QStringLiteral("Binder invocation to an incorrect interface"),
                           m_environment.sdk);
}

Answer Service::answerToUnknownCode() const
{
    return statusAnswer(StatusUnknownTransaction);
}

// Android's stubs read zeros and nulls from a short request and ignore what is left of a long one;
// a runtime that did so here would hide the caller's mistake.
Answer Service::answerToBadRequest() const
{
    return exceptionAnswer(ExceptionIllegalArgument, QStringLiteral("Malformed request"),
                           m_environment.sdk);
}

} // namespace SimRuntime
