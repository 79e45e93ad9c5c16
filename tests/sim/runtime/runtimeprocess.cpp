#include "sim/runtime/runtimeprocess.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QtTest>

namespace {

const QString Incoming = QStringLiteral("/data/xrs-staging/app/incoming/");

} // namespace

RuntimeProcess::~RuntimeProcess()
{
    for (QProcess *process : {&m_runtime, &m_router}) {
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(5000))
            process->kill();
        process->waitForFinished();
    }
}

bool RuntimeProcess::start(int sdk, const QStringList &moreArguments)
{
    QDir().mkpath(dataRoot() + Incoming);
    m_router.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_router.start(QStringLiteral(SIM_BINDER_PROGRAM),
                   {QStringLiteral("--strict"), path("device")});
    if (!m_router.waitForReadyRead())
        return false;
    m_runtime.setProcessChannelMode(QProcess::ForwardedChannels);
    m_runtime.start(QStringLiteral(SIM_RUNTIME_PROGRAM),
                    QStringList{QStringLiteral("--device"), path("device"), QStringLiteral("--sdk"),
                                QString::number(sdk), QStringLiteral("--data-root"), dataRoot(),
                                QStringLiteral("--record"), path("record"),
                                QStringLiteral("--control"), path("control")} +
                        moreArguments);
    const auto connected = [this] {
        m_control.connectToServer(path("control"));
        return m_control.waitForConnected(100);
    };
    const auto booted = [this] {
        return control({{QStringLiteral("command"), QStringLiteral("state")}})
            .value(QStringLiteral("booted"))
            .toBool();
    };
    return QTest::qWaitFor(connected) && QTest::qWaitFor(booted);
}

int RuntimeProcess::stop()
{
    m_runtime.terminate();
    return m_runtime.waitForFinished() && m_runtime.exitStatus() == QProcess::NormalExit
               ? m_runtime.exitCode()
               : -1;
}

QJsonObject RuntimeProcess::control(const QJsonObject &command)
{
    m_control.write(QJsonDocument(command).toJson(QJsonDocument::Compact) + '\n');
    if (!QTest::qWaitFor([this] { return m_control.canReadLine(); }))
        return {};
    return QJsonDocument::fromJson(m_control.readLine()).object();
}

QString RuntimeProcess::stage(const char *apk) const
{
    const QString name = QLatin1String(apk);
    QFile::copy(QStringLiteral(SIM_APKS "/") + name, dataRoot() + Incoming + name);
    return Incoming + name;
}

QVector<QJsonObject> RuntimeProcess::wholeRecord() const
{
    QVector<QJsonObject> lines;
    QFile file(path("record"));
    if (!file.open(QIODevice::ReadOnly))
        return lines;
    while (!file.atEnd())
        lines.append(QJsonDocument::fromJson(file.readLine()).object());
    return lines;
}

QVector<QJsonObject> RuntimeProcess::record() const
{
    QVector<QJsonObject> lines;
    for (const QJsonObject &line : wholeRecord()) {
        if (line.value(QStringLiteral("service")) != QStringLiteral("servicemanager"))
            lines.append(line);
    }
    return lines;
}

QStringList RuntimeProcess::problems() const
{
    QStringList problems;
    for (const QJsonObject &line : wholeRecord()) {
        if (line.contains(QStringLiteral("problem")))
            problems.append(QString::fromUtf8(QJsonDocument(line).toJson()));
    }
    return problems;
}

bool RuntimeProcess::wasDriverUsedWell()
{
    m_router.terminate();
    return m_router.waitForFinished() && m_router.exitCode() == 0;
}
