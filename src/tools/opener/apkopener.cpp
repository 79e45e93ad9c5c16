#include "tools/opener/apkopener.h"

#include "tools/common/location.h"
#include "tools/common/runtimerevival.h"
#include "tools/opener/desktopnotice.h"

#include <QDir>
#include <QFileInfo>

ApkOpener::ApkOpener(const QDBusConnection &systemBus, const QDBusConnection &sessionBus)
    : m_daemon(systemBus)
    , m_unit(systemBus)
    , m_sessionBus(sessionBus)
{
}

Outcome ApkOpener::open(const QString &argument)
{
    const Location location = locationOf(argument, QDir::currentPath());
    const QString fileName = QFileInfo(location.address).fileName();
    DesktopNotice notice(m_sessionBus);
    notice.show(installingNotice(fileName));

    const Outcome outcome =
        location.isFile && QFileInfo(location.address).isFile()
            ? install(location.address)
            : Outcome{ExitStatus::Refused,
                      QStringLiteral("There is no file “%1” to install.").arg(location.address)};
    if (const std::optional<ApkNotice> failure = failureNotice(fileName, outcome.status))
        notice.show(*failure);
    return outcome;
}

Outcome ApkOpener::install(const QString &path)
{
    Outcome outcome = reviveFailedRuntime(m_unit, m_daemon);
    if (!outcome.isDone())
        return outcome;
    const QDBusPendingReply<bool> reply = m_daemon.proxy().installFile(path);
    outcome = m_daemon.finish(reply);
    return outcome.isDone() && !reply.value() ? refusal(path) : outcome;
}

Outcome ApkOpener::refusal(const QString &path) const
{
    const RuntimeUnit::State state = m_unit.read();
    if (state.isUnstartable)
        return state.outcome;
    return {
        ExitStatus::Refused,
        QStringLiteral("bramd does not install “%1”. “journalctl -u bramd” says why.").arg(path)};
}
