#include "tools/opener/apkopener.h"

#include "tools/common/installable.h"
#include "tools/common/location.h"
#include "tools/common/runtimeready.h"
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
    const Outcome usable = Installable::examine(location).outcome;
    if (!usable.isDone()) {
        notice.show(unusableFileNotice(fileName));
        return usable;
    }

    notice.show(installingNotice(fileName));
    const Outcome outcome = install(location.address);
    const std::optional<ApkNotice> failure =
        failureNotice(fileName, outcome.status, RuntimeReady::isInstalled());
    if (failure)
        notice.show(*failure);
    return outcome;
}

Outcome ApkOpener::install(const QString &path)
{
    // Without a runtime the daemon is asked all the same: it opens the store's page then.
    Outcome outcome =
        RuntimeReady::isInstalled() ? RuntimeReady::makeStartable(m_unit, m_daemon) : Outcome();
    if (!outcome.isDone())
        return outcome;
    const QDBusPendingReply<bool> reply = m_daemon.proxy().installFile(path);
    outcome = m_daemon.finish(reply);
    return outcome.isDone() && !reply.value() ? RuntimeReady::installRefusal(m_unit, path)
                                              : outcome;
}
