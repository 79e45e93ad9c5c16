#include "tools/launcher/launcher.h"

#include "tools/common/hostfile.h"
#include "tools/common/location.h"
#include "tools/common/runtimeready.h"
#include "tools/launcher/launchrequest.h"

#include <QDir>
#include <QVector>

namespace {

const QString Main = QStringLiteral("android.intent.action.MAIN");
const QString View = QStringLiteral("android.intent.action.VIEW");

QVector<Location> locations(const QStringList &arguments)
{
    QVector<Location> found;
    for (const QString &argument : arguments)
        found.append(locationOf(argument, QDir::currentPath()));
    return found;
}

Outcome checkThatTheyCanBeOpened(const QVector<Location> &locations)
{
    for (const Location &location : locations) {
        const Outcome outcome = HostFile::checkForApps(location);
        if (!outcome.isDone())
            return outcome;
    }
    return {};
}

} // namespace

Launcher::Launcher(const QDBusConnection &bus)
    : m_daemon(bus)
    , m_unit(bus)
{
}

Outcome Launcher::launch(const LaunchRequest &request)
{
    const QVector<Location> opened = locations(request.opened);
    Outcome outcome = checkThatTheyCanBeOpened(opened);
    if (outcome.isDone())
        outcome = RuntimeReady::makeStartable(m_unit, m_daemon);
    if (!outcome.isDone())
        return outcome;

    if (opened.isEmpty())
        return start(request, Main, QString(), QString());
    for (const Location &location : opened) {
        outcome = start(request, View, location.address, mimeTypeOf(location));
        if (!outcome.isDone())
            break;
    }
    return outcome;
}

Outcome Launcher::start(const LaunchRequest &request, const QString &action, const QString &data,
                        const QString &type)
{
    return m_daemon.finish(m_daemon.proxy().launchIntent(action, data, type, request.package,
                                                         request.className, QString(), {}));
}
