#include "daemon/partnerspace.h"

#include "platform/host/logging.h"

#include <QFile>
#include <QRegularExpression>

PartnerSpace::PartnerSpace(const QString &directory)
    : m_directory(directory)
{
}

void PartnerSpace::mark(const QString &apkName) const
{
    QFile marker(m_directory + apkName);
    if (!marker.open(QIODevice::WriteOnly))
        qCWarning(daemonLog) << "Cannot create partner space marker:" << marker.fileName();
}

void PartnerSpace::unmark(const QString &apkName) const
{
    QFile::remove(m_directory + markerToRemove(apkName));
}

QString PartnerSpace::markerToRemove(const QString &apkName)
{
    static const QRegularExpression number(QStringLiteral("-\\d+\\.apk"));
    const QRegularExpressionMatch match = number.match(apkName);
    if (!match.hasMatch())
        return apkName;
    QString marker = apkName;
    return marker.replace(match.capturedStart(), match.capturedLength(), QStringLiteral(".apk"));
}
