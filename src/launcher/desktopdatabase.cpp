#include "launcher/desktopdatabase.h"

#include "launcher/logging.h"

#include <QProcess>

namespace DesktopDatabase {

void refresh(int timeoutMs)
{
    const QString program = QStringLiteral("/usr/bin/update-desktop-database");

    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, {QStringLiteral("-q")});
    if (process.waitForFinished(timeoutMs) || process.state() == QProcess::NotRunning)
        return;

    qCWarning(launcherLog) << "Ending program that does not finish:" << program;
    process.kill();
    process.waitForFinished();
}

} // namespace DesktopDatabase
