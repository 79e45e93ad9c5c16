#include "runtime/recorder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcRecorder, "sim.runtime.record")

namespace SimRuntime {

bool Recorder::open(const QString &path)
{
    if (path.isEmpty())
        return true;
    m_file.setFileName(path);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return true;
    qCCritical(lcRecorder) << "Cannot write" << path << m_file.errorString();
    return false;
}

void Recorder::record(const QString &service, const QString &interface, const IncomingCall &call,
                      const QString &method, const QJsonObject &decoded, const QString &problem)
{
    if (!problem.isNull())
        qCWarning(lcRecorder) << service << "code" << call.code << "from" << call.pid << problem;
    if (!m_file.isOpen())
        return;
    QJsonArray objects;
    for (const quint64 position : call.parcel.objects)
        objects.append(qint64(position));
    QJsonObject line{
        {QStringLiteral("service"), service},
        {QStringLiteral("interface"), interface},
        {QStringLiteral("code"), qint64(call.code)},
        {QStringLiteral("oneway"), call.oneWay},
        {QStringLiteral("pid"), call.pid},
        {QStringLiteral("uid"), qint64(call.uid)},
        {QStringLiteral("data"), QString::fromLatin1(call.parcel.data.toHex())},
        {QStringLiteral("objects"), objects},
    };
    if (!method.isNull()) {
        line.insert(QStringLiteral("method"), method);
        line.insert(QStringLiteral("decoded"), decoded);
    }
    if (!problem.isNull())
        line.insert(QStringLiteral("problem"), problem);
    m_file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    m_file.flush();
}

} // namespace SimRuntime
