#include "tools/ctl/packagecommands.h"

#include "tools/common/daemonclient.h"
#include "tools/common/installable.h"
#include "tools/common/location.h"
#include "tools/common/runtimeready.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/installwatch.h"
#include "tools/ctl/requestwait.h"
#include "tools/ctl/waiting.h"

#include <QDir>

#include <algorithm>

namespace {

constexpr int InstallTimeoutS = 180;
constexpr int RemoveTimeoutS = 120;

const QString Wait = QStringLiteral("--wait");
const QString Unlisted = QStringLiteral("--unlisted");

struct Candidate
{
    QString path;
    Installable file;
};

Candidate examine(const QString &argument)
{
    const Location location = locationOf(argument, QDir::currentPath());
    return {location.address, Installable::examine(location)};
}

/// The wait for an app came to nothing.
Outcome notInstalled(const RequestWait &wait, RequestWait::End end, const InstallWatch &watch,
                     const QString &package)
{
    switch (end) {
    case RequestWait::End::Seen:
        break;
    case RequestWait::End::RuntimeUnknown:
        return wait.unit().outcome;
    case RequestWait::End::RuntimeFailed:
        return {ExitStatus::RuntimeUnavailable,
                QStringLiteral("The Android runtime has failed, and %1 is not installed. Start it "
                               "with “bramctl start” and install again; “journalctl -u umbravm” "
                               "tells why it failed.")
                    .arg(package)};
    case RequestWait::End::DaemonGone:
        return {ExitStatus::DaemonUnreachable,
                QStringLiteral("bramd has ended before %1 was installed, and may have forgotten "
                               "it. Look at “journalctl -u bramd”, and install again if “bramctl "
                               "list” does not show it.")
                    .arg(package)};
    case RequestWait::End::TimeUp:
        if (watch.wasThereBefore()) {
            return {ExitStatus::NotConfirmed,
                    QStringLiteral("%1 was there before, and its version has not changed in time. "
                                   "A notice on the screen tells whether it was installed or "
                                   "failed.")
                        .arg(package)};
        }
        return {ExitStatus::NotConfirmed,
                QStringLiteral("%1 has not appeared in time. An app without anything to open never "
                               "does; a notice on the screen tells whether it was installed or "
                               "failed, and “journalctl -u bramd” what went wrong.")
                    .arg(package)};
    }
    return {};
}

Outcome waitForApp(const Candidate &candidate, const InstallWatch &watch, Context &context,
                   int timeoutMs)
{
    const QString &package = candidate.file.apk.packageName;
    if (watch.hadThisVersion()) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("%1 was there in version %2 before, so that nothing here shows when "
                               "it is installed again. A notice on the screen tells.")
                    .arg(package, candidate.file.apk.versionName)};
    }
    RequestWait wait(context, true);
    const RequestWait::End end = wait.until([&watch] { return watch.hasChanged(); }, timeoutMs);
    if (end != RequestWait::End::Seen)
        return notInstalled(wait, end, watch, package);
    context.out().line(QStringLiteral("%1 %2.").arg(package, watch.wasThereBefore()
                                                                 ? QStringLiteral("is updated")
                                                                 : QStringLiteral("is installed")));
    return {};
}

Outcome installOne(const Candidate &candidate, Context &context, bool wait, int timeoutMs)
{
    if (!candidate.file.outcome.isDone())
        return candidate.file.outcome;
    const InstallWatch watch(candidate.file.apk.packageName, candidate.file.apk.versionName);
    QDBusPendingReply<bool> reply = context.daemon().proxy().installFile(candidate.path);
    Outcome outcome = context.daemon().finish(reply);
    if (!outcome.isDone())
        return outcome;
    if (!reply.value())
        return RuntimeReady::installRefusal(context.unit(), candidate.path);
    context.out().line(
        wait ? QStringLiteral("bramd has taken %1 (%2).")
                   .arg(candidate.path, candidate.file.apk.packageName)
             : QStringLiteral("bramd has taken %1 (%2). A notice tells when it is installed.")
                   .arg(candidate.path, candidate.file.apk.packageName));
    return wait ? waitForApp(candidate, watch, context, timeoutMs) : Outcome();
}

/// Without a runtime the daemon is asked all the same: it opens the store's page for it then.
Outcome requireInstaller(Context &context)
{
    return RuntimeReady::isInstalled() ? context.requireStartableRuntime()
                                       : context.requireDaemon();
}

/// Each file is handed over, even if one before it was refused, as long as there is a daemon. Each
/// failure is told at once, and the first is the status.
Outcome install(const Invocation &invocation, Context &context)
{
    if (invocation.has(QStringLiteral("--timeout")) && !invocation.has(Wait))
        return {ExitStatus::Usage, QStringLiteral("--timeout counts only together with --wait.")};
    const int timeoutMs = Waiting::timeoutMs(invocation, InstallTimeoutS);
    if (timeoutMs < 0)
        return CommonTexts::badTimeout();
    QVector<Candidate> candidates;
    for (const QString &argument : invocation.arguments)
        candidates.append(examine(argument));
    const bool anyUsable =
        std::any_of(candidates.cbegin(), candidates.cend(),
                    [](const Candidate &candidate) { return candidate.file.outcome.isDone(); });
    Outcome ready = anyUsable ? requireInstaller(context) : Outcome();
    if (!ready.isDone())
        return ready;

    ExitStatus status = ExitStatus::Done;
    for (const Candidate &candidate : candidates) {
        const Outcome outcome = installOne(candidate, context, invocation.has(Wait), timeoutMs);
        reportOutcome(outcome);
        status = firstFailure(status, outcome.status);
        if (outcome.status == ExitStatus::DaemonUnreachable)
            break;
    }
    return {status, QString()};
}

/// The wait for an app to go came to nothing.
Outcome notRemoved(const RequestWait &wait, RequestWait::End end, const QString &package)
{
    switch (end) {
    case RequestWait::End::Seen:
        break;
    case RequestWait::End::RuntimeUnknown:
        return wait.unit().outcome;
    case RequestWait::End::RuntimeFailed:
        return {ExitStatus::RuntimeUnavailable,
                QStringLiteral("The Android runtime has failed, and %1 is still there. Start it "
                               "with “bramctl start” and remove the app again.")
                    .arg(package)};
    case RequestWait::End::DaemonGone:
        return {ExitStatus::DaemonUnreachable,
                QStringLiteral("bramd has ended, and %1 is still there. Look at “journalctl -u "
                               "bramd”, and remove the app again.")
                    .arg(package)};
    case RequestWait::End::TimeUp:
        return {ExitStatus::NotConfirmed,
                QStringLiteral("%1 is still there. Apps that belong to the runtime itself cannot "
                               "be removed; “journalctl -u bramd” tells more.")
                    .arg(package)};
    }
    return {};
}

/// An app without anything to open has no entry: the host never knew it.
Outcome requireListed(const QString &package)
{
    Outcome outcome = CommonTexts::notInstalled(package);
    outcome.sentence += QStringLiteral(" It never shows apps without anything to open: to remove "
                                       "one of these, give --unlisted.");
    return AppEntries::isInstalled(package) ? Outcome() : outcome;
}

Outcome remove(const Invocation &invocation, Context &context)
{
    const int timeoutMs = Waiting::timeoutMs(invocation, RemoveTimeoutS);
    if (timeoutMs < 0)
        return CommonTexts::badTimeout();
    const QString &package = invocation.arguments.first();
    Outcome named = CommonTexts::requirePackageName(package);
    if (!named.isDone())
        return named;
    Outcome ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;
    Outcome listed = requireListed(package);
    if (!listed.isDone() && !invocation.has(Unlisted))
        return listed;

    QDBusPendingReply<bool> reply = context.daemon().proxy().removeFile(package);
    Outcome outcome = context.daemon().finish(reply);
    if (!outcome.isDone())
        return outcome;
    if (!reply.value()) {
        return {ExitStatus::Refused,
                QStringLiteral("bramd has refused to remove %1: you may not remove apps on this "
                               "phone. “journalctl -u bramd” tells more.")
                    .arg(package)};
    }
    if (!listed.isDone()) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("bramd has taken it, but the host does not list %1, so that nothing "
                               "here shows whether it is gone. “journalctl -u bramd” may tell.")
                    .arg(package)};
    }

    RequestWait wait(context, false);
    const RequestWait::End end =
        wait.until([&package] { return !AppEntries::isInstalled(package); }, timeoutMs);
    if (end != RequestWait::End::Seen)
        return notRemoved(wait, end, package);
    context.out().line(QStringLiteral("%1 is removed.").arg(package));
    return {};
}

} // namespace

QVector<Command> packageCommands()
{
    return {
        {QStringLiteral("install"),
         {{QStringLiteral("FILE"), ArgumentKind::File, false, true}},
         {{Wait, QString(), ArgumentKind::Word, QStringLiteral("Wait until the app is there"),
           false},
          CommonTexts::timeoutOption(InstallTimeoutS)},
         QStringLiteral("Install apps from APK files"),
         QStringLiteral("FILE is a path or a file URL. The runtime is started if needed. Without "
                        "--wait, done means that bramd took the file; a notice tells what became "
                        "of it. With several files and --wait, one is installed after the "
                        "other. That an installation has failed shows in a notice on the phone "
                        "only, so that --wait waits its full time then. Nothing here "
                        "shows when the same version is installed again, nor apps without anything "
                        "to open: they are not confirmed."),
         install},
        {QStringLiteral("remove"),
         {CommonTexts::packageArgument()},
         {{Unlisted, QString(), ArgumentKind::Word,
           QStringLiteral("Even one that the host does not list"), false},
          CommonTexts::timeoutOption(RemoveTimeoutS)},
         QStringLiteral("Remove an app and its data"),
         QStringLiteral("Waits until the host has forgotten the app. The runtime is started if "
                        "needed. An app without anything to open is never listed by the host; its "
                        "removal is not confirmed."),
         remove},
    };
}
