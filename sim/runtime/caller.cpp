#include "runtime/caller.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLoggingCategory>

#include <utility>

Q_LOGGING_CATEGORY(lcCaller, "sim.runtime.caller")

namespace SimRuntime {

namespace {

constexpr int ExitTimeLimitMs = 2000;

} // namespace

Caller::Caller(const QStringList &arguments, QObject *parent)
    : QObject(parent)
    , m_arguments(arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &Caller::onOutput);
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &Caller::onFinished);
}

Caller::~Caller()
{
    m_process.disconnect(this);
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(ExitTimeLimitMs)) {
        m_process.kill();
        m_process.waitForFinished(ExitTimeLimitMs);
    }
    failPending();
}

void Caller::call(const QString &service, quint32 code, const Parcel &parcel, CallMode mode,
                  const BinderLoop::Completion &completion)
{
    send({{QStringLiteral("service"), service},
          {QStringLiteral("code"), qint64(code)},
          {QStringLiteral("oneway"), mode == CallMode::OneWay},
          {QStringLiteral("data"), QString::fromLatin1(parcel.data.toHex())}},
         completion);
}

void Caller::flood(const QString &service, quint32 code, const Parcel &parcel, const Flood &flood,
                   const BinderLoop::Completion &completion)
{
    send({{QStringLiteral("service"), service},
          {QStringLiteral("code"), qint64(code)},
          {QStringLiteral("oneway"), true},
          {QStringLiteral("data"), QString::fromLatin1(parcel.data.toHex())},
          {QStringLiteral("count"), flood.count},
          {QStringLiteral("objects"), flood.objects},
          {QStringLiteral("files"), flood.files},
          {QStringLiteral("zeros"), flood.zeros}},
         completion);
}

void Caller::registerMayflies(const QString &name, int count,
                              const BinderLoop::Completion &completion)
{
    send({{QStringLiteral("mayfly"), name}, {QStringLiteral("count"), count}}, completion);
}

void Caller::send(QJsonObject request, const BinderLoop::Completion &completion)
{
    if (m_process.state() == QProcess::NotRunning)
        m_process.start(QCoreApplication::applicationFilePath(), m_arguments);
    request.insert(QStringLiteral("id"), ++m_lastId);
    m_pending.insert(m_lastId, completion);
    m_process.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
}

void Caller::onOutput()
{
    while (m_process.canReadLine()) {
        const QJsonObject answer = QJsonDocument::fromJson(m_process.readLine()).object();
        const auto completion = m_pending.take(answer.value(QStringLiteral("id")).toInt());
        Parcel reply;
        reply.data =
            QByteArray::fromHex(answer.value(QStringLiteral("reply")).toString().toLatin1());
        if (completion)
            completion(answer.value(QStringLiteral("status")).toInt(), reply);
    }
}

void Caller::onFinished()
{
    qCWarning(lcCaller) << "The process that makes the calls has ended";
    failPending();
}

void Caller::failPending()
{
    const auto pending = std::exchange(m_pending, {});
    for (const auto &completion : pending)
        completion(StatusDeadObject, {});
}

} // namespace SimRuntime
