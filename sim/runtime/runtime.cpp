#include "runtime/runtime.h"

#include "runtime/interfacetoken.h"
#include "runtime/launcherservice.h"
#include "runtime/parcelwriter.h"

#include <QCoreApplication>
#include <QJsonArray>

namespace SimRuntime {

namespace {

QJsonObject succeeded(QJsonObject answer = {})
{
    answer.insert(QStringLiteral("ok"), true);
    return answer;
}

QJsonObject failed(const QString &error)
{
    return {{QStringLiteral("ok"), false}, {QStringLiteral("error"), error}};
}

QString text(const QJsonObject &command, const char *key)
{
    return command.value(QLatin1String(key)).toString();
}

QByteArray bytes(const QJsonObject &command)
{
    return QByteArray::fromHex(text(command, "data").toLatin1());
}

quint32 code(const QJsonObject &command)
{
    return quint32(command.value(QStringLiteral("code")).toDouble());
}

template <typename Activity>
QJsonArray classNames(const QVector<Activity> &activities)
{
    QJsonArray names;
    for (const Activity &activity : activities)
        names.append(activity.className);
    return names;
}

QJsonObject describe(const InstalledPackage &package)
{
    return {
        {QStringLiteral("package"), package.info.package},
        {QStringLiteral("versionCode"), package.info.versionCode},
        {QStringLiteral("versionName"), package.info.versionName},
        {QStringLiteral("label"), package.info.label},
        {QStringLiteral("uid"), package.uid},
        {QStringLiteral("launchers"), classNames(package.info.launchers)},
        {QStringLiteral("handlers"), classNames(package.info.handlers)},
    };
}

} // namespace

Runtime::Runtime(const Options &options)
    : m_options(options)
    , m_control([this](const QJsonObject &command, const ControlServer::Reply &reply) {
        onCommand(command, reply);
    })
{
}

Runtime::~Runtime() = default;

bool Runtime::start()
{
    return m_recorder.open(m_options.record) && boot() &&
           (m_options.control.isEmpty() || m_control.listen(m_options.control));
}

bool Runtime::boot()
{
    m_system = std::make_unique<System>(m_options, &m_recorder, &m_faults);
    connect(m_system.get(), &System::lost, qApp, [] { QCoreApplication::exit(1); });
    if (!m_system->start())
        return false;
    for (const QString &name : qAsConst(m_options.held))
        m_system->names().hold(name);
    return true;
}

// The device is closed before it is opened anew: there is one service manager at a time.
void Runtime::restart()
{
    m_system.reset();
    if (!boot())
        QCoreApplication::exit(1);
}

void Runtime::onCommand(const QJsonObject &command, const ControlServer::Reply &reply)
{
    using Handler = void (Runtime::*)(const QJsonObject &, const ControlServer::Reply &);
    static const QHash<QString, Handler> handlers = {
        {QStringLiteral("apps"), &Runtime::apps},
        {QStringLiteral("state"), &Runtime::state},
        {QStringLiteral("announce"), &Runtime::announce},
        {QStringLiteral("call"), &Runtime::call},
        {QStringLiteral("observer"), &Runtime::observer},
        {QStringLiteral("flood"), &Runtime::flood},
        {QStringLiteral("mayflies"), &Runtime::mayflies},
        {QStringLiteral("fault"), &Runtime::fault},
        {QStringLiteral("hold"), &Runtime::hold},
        {QStringLiteral("release"), &Runtime::release},
        {QStringLiteral("close"), &Runtime::closeApp},
        {QStringLiteral("restart"), &Runtime::restartOnCommand},
        {QStringLiteral("quit"), &Runtime::quit},
    };
    const Handler handler = handlers.value(text(command, "command"));
    if (handler == nullptr)
        reply(failed(QStringLiteral("unknown command")));
    else
        (this->*handler)(command, reply);
}

void Runtime::apps(const QJsonObject &, const ControlServer::Reply &reply)
{
    QJsonArray apps;
    for (const QString &package : m_system->packages().names())
        apps.append(describe(m_system->packages().find(package)));
    reply(succeeded({{QStringLiteral("apps"), apps}}));
}

void Runtime::state(const QJsonObject &, const ControlServer::Reply &reply)
{
    reply(succeeded({
        {QStringLiteral("booted"), m_system->isBooted()},
        {QStringLiteral("running"), QJsonArray::fromStringList(m_system->running().all())},
        {QStringLiteral("whitelist"), QJsonArray::fromStringList(m_system->whitelist())},
        {QStringLiteral("timezone"), m_system->timeZone()},
    }));
}

void Runtime::announce(const QJsonObject &, const ControlServer::Reply &reply)
{
    m_system->announcer().announceAll();
    reply(succeeded());
}

void Runtime::call(const QJsonObject &command, const ControlServer::Reply &reply)
{
    const bool oneWay = command.value(QStringLiteral("oneway")).toBool();
    m_system->caller().call(
        text(command, "service"), code(command), requestOf(command),
        oneWay ? CallMode::OneWay : CallMode::TwoWay, [reply](qint32 status, const Parcel &answer) {
            reply(succeeded({{QStringLiteral("status"), status},
                             {QStringLiteral("reply"), QString::fromLatin1(answer.data.toHex())}}));
        });
}

void Runtime::flood(const QJsonObject &command, const ControlServer::Reply &reply)
{
    const auto number = [&command](const char *key) {
        return command.value(QLatin1String(key)).toInt();
    };
    const Flood flood{number("count"), number("objects"), number("files"), number("zeros")};
    m_system->caller().flood(text(command, "service"), code(command), requestOf(command), flood,
                             [reply](qint32 status, const Parcel &) {
                                 reply(succeeded({{QStringLiteral("status"), status}}));
                             });
}

void Runtime::mayflies(const QJsonObject &command, const ControlServer::Reply &reply)
{
    m_system->caller().registerMayflies(text(command, "service"),
                                        command.value(QStringLiteral("count")).toInt(),
                                        [reply](qint32 status, const Parcel &) {
                                            reply(succeeded({{QStringLiteral("status"), status}}));
                                        });
}

// The interface token, unless it is to be left out, and the data.
Parcel Runtime::requestOf(const QJsonObject &command) const
{
    ParcelWriter writer;
    if (command.value(QStringLiteral("token")).toBool(true)) {
        const QString descriptor = text(command, "interface");
        writeInterfaceToken(&writer, descriptor.isEmpty() ? launcherDescriptor() : descriptor,
                            m_options.sdk);
    }
    writer.raw(bytes(command));
    return writer.parcel();
}

void Runtime::observer(const QJsonObject &command, const ControlServer::Reply &reply)
{
    static const QHash<QString, CallbackKind> kinds = {
        {QStringLiteral("install"), CallbackKind::InstallObserver},
        {QStringLiteral("delete"), CallbackKind::DeleteObserver},
        {QStringLiteral("listener"), CallbackKind::AppListener},
    };
    const auto kind = kinds.constFind(text(command, "kind"));
    const auto object = kind == kinds.constEnd() ? nullptr : m_system->callbacks().last(*kind);
    if (object == nullptr) {
        reply(failed(QStringLiteral("no such object has been handed over")));
        return;
    }
    ParcelWriter writer = m_system->callbacks().request(*kind);
    writer.raw(bytes(command));
    object->call(code(command), writer.parcel(), [reply](qint32 status) {
        reply(succeeded({{QStringLiteral("status"), status}}));
    });
}

void Runtime::fault(const QJsonObject &command, const ControlServer::Reply &reply)
{
    const QString service = text(command, "service");
    if (text(command, "kind") == QLatin1String("none")) {
        m_faults.clear(service);
        reply(succeeded());
        return;
    }
    const auto kind = faultKind(text(command, "kind"));
    if (!kind) {
        reply(failed(QStringLiteral("unknown kind of fault")));
        return;
    }
    std::optional<quint32> onlyCode;
    if (command.contains(QStringLiteral("code")))
        onlyCode = code(command);
    m_faults.add(service, onlyCode, {*kind, command.value(QStringLiteral("value")).toInt()},
                 command.value(QStringLiteral("count")).toInt(1));
    reply(succeeded());
}

void Runtime::hold(const QJsonObject &command, const ControlServer::Reply &reply)
{
    const QString name = text(command, "service");
    if (!m_options.held.contains(name))
        m_options.held.append(name);
    m_system->names().hold(name);
    reply(succeeded());
}

void Runtime::release(const QJsonObject &command, const ControlServer::Reply &reply)
{
    const QString name = text(command, "service");
    m_options.held.removeAll(name);
    m_system->names().releaseName(name);
    reply(succeeded());
}

void Runtime::closeApp(const QJsonObject &command, const ControlServer::Reply &reply)
{
    m_system->running().close(text(command, "package"));
    reply(succeeded());
}

void Runtime::restartOnCommand(const QJsonObject &, const ControlServer::Reply &reply)
{
    restart();
    reply(succeeded());
}

void Runtime::quit(const QJsonObject &, const ControlServer::Reply &reply)
{
    reply(succeeded());
    QCoreApplication::quit();
}

} // namespace SimRuntime
