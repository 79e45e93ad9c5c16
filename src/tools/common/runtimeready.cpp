#include "tools/common/runtimeready.h"

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"
#include "tools/common/startwatch.h"
#include "tools/common/waiting.h"

#include <QFileInfo>

namespace RuntimeReady {

bool isInstalled()
{
    return QFileInfo::exists(QStringLiteral("/opt/umbra/system.img"));
}

Outcome makeStartable(const RuntimeUnit &unit, DaemonClient &daemon)
{
    RuntimeUnit::State state = unit.read();
    if (state.isUnstartable)
        return state.outcome;
    if (!state.hasFailed())
        return {};
    Outcome taken = daemon.finish(daemon.proxy().controlService(true));
    if (!taken.isDone())
        return taken;

    StartWatch watch(state);
    const auto hasEnded = [&] {
        state = unit.read();
        return watch.hasEnded(state);
    };
    Waiting::until(hasEnded, StartWatch::LookedFailedMs);
    return state.hasFailed() ? StartWatch::failure() : Outcome();
}

Outcome installRefusal(const RuntimeUnit &unit, const QString &path)
{
    if (!isInstalled()) {
        return {ExitStatus::RuntimeUnavailable,
                QStringLiteral("The Android runtime is not installed. Install it from the store, "
                               "whose page for it has been opened if there is one.")};
    }
    const RuntimeUnit::State state = unit.read();
    if (state.isUnstartable)
        return state.outcome;
    return {ExitStatus::Refused,
            QStringLiteral("bramd has refused “%1”. If you may not install apps, a notice says so; "
                           "“journalctl -u bramd” tells the reason.")
                .arg(path)};
}

} // namespace RuntimeReady
