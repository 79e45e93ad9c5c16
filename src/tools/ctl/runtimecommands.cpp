#include "tools/ctl/runtimecommands.h"

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/androidversion.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/daemonstatus.h"
#include "tools/ctl/texttable.h"
#include "tools/ctl/unitcontrol.h"
#include "tools/ctl/waiting.h"

#include <QCoreApplication>
#include <QJsonObject>

namespace {

constexpr int StartTimeoutS = 60;

QJsonObject versionInJson(const AndroidVersionData &version)
{
    return {{QStringLiteral("sdk"), version.sdkVersion},
            {QStringLiteral("release"), version.release},
            {QStringLiteral("securityPatch"), version.securityPatch}};
}

QStringList statusLines(const QString &daemon, const RuntimeUnit::State &unit,
                        const AndroidVersionData &version, int apps)
{
    const bool isKnown = unit.outcome.isDone();
    return TextTable::lines({
        {QStringLiteral("bramd"), daemon},
        {QStringLiteral("Runtime"),
         isKnown ? QStringLiteral("%1 (%2)").arg(unit.activeState, unit.subState)
                 : QStringLiteral("not known")},
        {QStringLiteral("At boot"), !isKnown           ? QStringLiteral("not known")
                                    : unit.isEnabled() ? QStringLiteral("started")
                                                       : QStringLiteral("not started")},
        {QStringLiteral("Android"),
         version.sdkVersion == 0 ? QStringLiteral("not known") : AndroidVersion::text(version)},
        {QStringLiteral("Apps"), QString::number(apps)},
    });
}

Outcome status(const Invocation &invocation, Context &context)
{
    const Context::DaemonState daemonState = context.daemonState();
    RuntimeUnit::State unit;
    if (daemonState == Context::DaemonState::NoBus)
        unit.outcome = context.requireDaemon();
    else
        unit = context.unit().read();
    const DaemonStatus::Answer answer = DaemonStatus::ask(daemonState);
    const AndroidVersionData &version = answer.android;
    const int apps = AppEntries::appsOf(AppEntries::readAll()).size();

    const QJsonObject runtime{
        {QStringLiteral("state"), unit.activeState},
        {QStringLiteral("subState"), unit.subState},
        {QStringLiteral("atBoot"), unit.isEnabled()},
    };
    const QJsonObject object{
        {QStringLiteral("daemon"), DaemonStatus::word(daemonState, answer)},
        {QStringLiteral("runtime"), unit.outcome.isDone() ? runtime : QJsonValue()},
        {QStringLiteral("android"),
         version.sdkVersion == 0 ? QJsonValue() : QJsonValue(versionInJson(version))},
        {QStringLiteral("apps"), apps},
    };
    context.out().answer(invocation.has(QStringLiteral("--json")), object,
                         statusLines(DaemonStatus::text(daemonState, answer), unit, version, apps));

    const Outcome daemon = context.requireDaemon();
    if (!daemon.isDone())
        return daemon;
    if (answer.isMissing())
        return answer.outcome;
    return unit.activeState == QLatin1String("failed") ? context.requireStartableRuntime()
                                                       : unit.outcome;
}

Outcome start(const Invocation &invocation, Context &context)
{
    const int timeoutMs = Waiting::timeoutMs(invocation, StartTimeoutS);
    return timeoutMs < 0 ? CommonTexts::badTimeout() : UnitControl::start(context, timeoutMs);
}

Outcome stop(const Invocation &invocation, Context &context)
{
    const int timeoutMs = Waiting::timeoutMs(invocation, StartTimeoutS);
    return timeoutMs < 0 ? CommonTexts::badTimeout() : UnitControl::stop(context, timeoutMs);
}

Outcome restart(const Invocation &invocation, Context &context)
{
    const int timeoutMs = Waiting::timeoutMs(invocation, StartTimeoutS);
    return timeoutMs < 0 ? CommonTexts::badTimeout() : UnitControl::restart(context, timeoutMs);
}

Outcome autostart(const Invocation &invocation, Context &context)
{
    return UnitControl::setAutostart(context, invocation.arguments.first() == QLatin1String("on"));
}

/// A daemon that does not run is started by the question, which takes its time.
DaemonStatus::Answer askOrStart(Context &context)
{
    const Context::DaemonState state = context.daemonState();
    if (state == Context::DaemonState::Running)
        return DaemonStatus::ask(state);
    QDBusPendingReply<AndroidVersionData> reply = context.daemon().proxy().getAndroidVersionData();
    const Outcome outcome = context.daemon().finish(reply);
    return {outcome, outcome.isDone() ? reply.value() : AndroidVersionData()};
}

Outcome version(const Invocation &invocation, Context &context)
{
    const auto [outcome, android] = askOrStart(context);
    const bool isKnown = android.sdkVersion != 0;

    const QString ownVersion = QCoreApplication::applicationVersion();
    const QJsonObject object{
        {QStringLiteral("bramctl"), ownVersion},
        {QStringLiteral("android"), isKnown ? QJsonValue(versionInJson(android)) : QJsonValue()}};
    context.out().answer(
        invocation.has(QStringLiteral("--json")), object,
        TextTable::lines({{QStringLiteral("bramctl"), ownVersion},
                          {QStringLiteral("Android"), isKnown ? AndroidVersion::text(android)
                                                              : QStringLiteral("not known")}}));
    if (!outcome.isDone() || isKnown)
        return outcome;
    return {ExitStatus::RuntimeUnavailable,
            QStringLiteral("The Android runtime's image does not tell its version, or there is "
                           "none: look whether /opt/umbra/build.prop is there.")};
}

Outcome usage(const Invocation &invocation, Context &context)
{
    QDBusPendingReply<qulonglong> reply = context.daemon().proxy().getAndroidAppDataUsage();
    const Outcome outcome = context.daemon().finish(reply);
    if (!outcome.isDone())
        return outcome;
    // An empty directory takes some bytes, too: nothing is the daemon's word for "not measured".
    if (reply.value() == 0) {
        return {ExitStatus::Refused,
                QStringLiteral("bramd could not measure it. Look at “journalctl -u bramd”.")};
    }
    context.out().answer(
        invocation.has(QStringLiteral("--json")),
        QJsonObject{{QStringLiteral("bytes"), static_cast<double>(reply.value())}},
        {QStringLiteral("All apps' data takes %1.").arg(TextTable::bytes(reply.value()))});
    return {};
}

} // namespace

QVector<Command> runtimeCommands()
{
    const QVector<Option> json{CommonTexts::jsonOption()};
    const QVector<Option> timeout{CommonTexts::timeoutOption(StartTimeoutS)};
    return {
        {QStringLiteral("status"),
         {},
         json,
         QStringLiteral("Show the state of bramd and of the Android runtime"),
         QStringLiteral("Starts neither of them. The runtime's state is what systemd says of "
                        "umbravm.service."),
         status,
         Effect::Answers},
        {QStringLiteral("start"),
         {},
         timeout,
         QStringLiteral("Start the Android runtime"),
         QStringLiteral("Waits until it is active. One that has failed is started anew."),
         start},
        {QStringLiteral("stop"),
         {},
         timeout,
         QStringLiteral("Stop the Android runtime and its apps"),
         QStringLiteral("Waits until it has stopped."),
         stop},
        {QStringLiteral("restart"),
         {},
         timeout,
         QStringLiteral("Stop the Android runtime and start it again"),
         QString(),
         restart},
        {QStringLiteral("autostart"),
         {{QStringLiteral("on|off"), ArgumentKind::OnOff, false, false}},
         {},
         QStringLiteral("Start the Android runtime at boot, or only when it is needed"),
         QString(),
         autostart},
        {QStringLiteral("version"),
         {},
         json,
         QStringLiteral("Show the versions of bramctl and of Android"),
         QString(),
         version,
         Effect::Answers},
        {QStringLiteral("usage"),
         {},
         json,
         QStringLiteral("Measure the disk use of all apps' data"),
         QStringLiteral("It may take half a minute, in which bramd does nothing else. "
                        "The runtime need not run, unlike for “size”."),
         usage,
         Effect::Answers},
    };
}
