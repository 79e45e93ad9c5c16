#include "daemon/appdatausage.h"

#include "platform/host/logging.h"

#include <QProcess>
#include <QStringList>

std::optional<quint64> sizeFromDu(const QByteArray &output)
{
    // from a C string: up to the first zero byte
    const QStringList parts = QString::fromUtf8(output.constData()).split(QLatin1Char('\t'));
    if (parts.size() < 2)
        return std::nullopt;
    return parts.first().toULongLong();
}

quint64 appDataUsage(const QString &directory, int timeoutMs)
{
    QProcess du;
    du.setStandardInputFile(QProcess::nullDevice());
    du.start(QStringLiteral("/usr/bin/du"), {QStringLiteral("-sxb"), directory},
             QIODevice::ReadOnly);
    std::optional<quint64> size;
    if (du.waitForFinished(timeoutMs) && du.exitStatus() == QProcess::NormalExit)
        size = sizeFromDu(du.readAllStandardOutput());
    if (du.state() != QProcess::NotRunning) {
        du.kill();
        du.waitForFinished();
    }
    if (!size)
        qCWarning(daemonLog) << "Could not determine android app data usage";
    return size.value_or(0);
}
