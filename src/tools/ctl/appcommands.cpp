#include "tools/ctl/appcommands.h"

#include "tools/common/daemonclient.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/confirmation.h"
#include "tools/ctl/context.h"
#include "tools/ctl/texttable.h"
#include "tools/ctl/waiting.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace {

constexpr int ClearTimeoutS = 10;

/// JSON has no larger numbers; no app comes near.
double number(qint64 bytes)
{
    return static_cast<double>(bytes);
}

QString inWords(qint64 bytes)
{
    return TextTable::bytes(static_cast<quint64>(std::max<qint64>(bytes, 0)));
}

Outcome list(const Invocation &invocation, Context &context)
{
    Outcome readable = CommonTexts::requireEntries();
    if (!readable.isDone())
        return readable;
    const QVector<App> apps = AppEntries::installedApps();
    QJsonArray array;
    QVector<QStringList> rows{{QStringLiteral("PKG"), QStringLiteral("NAME"),
                               QStringLiteral("VERSION"), QStringLiteral("REMARK")}};
    for (const App &app : apps) {
        array.append(AppEntries::inJson(app));
        rows.append({app.packageName, app.name, app.version,
                     app.isHidden ? QStringLiteral("not in the app grid") : QString()});
    }
    const QStringList none{QStringLiteral("No apps are installed. They appear here when the "
                                          "runtime has announced them.")};
    context.out().answer(invocation.has(QStringLiteral("--json")), array,
                         apps.isEmpty() ? none : TextTable::lines(rows));
    return {};
}

/// Whether an app may take as much. An app that the runtime does not know is answered with an
/// error, whose text the daemon hands on read as figures, some of which are beyond anything that a
/// phone can hold.
bool isPossible(const AppSizeInfo &size)
{
    constexpr qint64 Most = Q_INT64_C(1) << 50;

    const auto range = std::minmax({size.codeSize, size.dataSize, size.cacheSize});
    return range.first >= 0 && range.second <= Most;
}

/// What an app takes. It also proves that bramd reaches the runtime, which for a while after the
/// start of the unit it does not: bramd then drops requests without a word and answers with
/// nothing, but no app takes nothing. Negative figures stand for an answer that ended early.
Outcome readSize(Context &context, const QString &package, AppSizeInfo &size)
{
    if (!AppEntries::isInstalled(package))
        return CommonTexts::notInstalled(package);
    QDBusPendingReply<AppSizeInfo> reply = context.daemon().proxy().getAppSize(package);
    Outcome outcome = context.daemon().finish(reply);
    if (!outcome.isDone())
        return outcome;
    size = reply.value();
    if (size == AppSizeInfo() || size.codeSize < 0) {
        return {ExitStatus::RuntimeUnavailable,
                QStringLiteral("The Android runtime tells nothing about %1. It may still be "
                               "starting: try again in a moment. “journalctl -u bramd” may tell "
                               "more.")
                    .arg(package)};
    }
    if (!isPossible(size)) {
        return {ExitStatus::Refused,
                QStringLiteral("The Android runtime does not know %1, though the host lists it. "
                               "“bramctl restart” has the runtime announce its apps anew.")
                    .arg(package)};
    }
    return {};
}

/// The same, on a runtime that must run.
Outcome readSizeOfApp(Context &context, const QString &package, AppSizeInfo &size)
{
    const Outcome ready = context.requireRunningRuntime();
    return ready.isDone() ? readSize(context, package, size) : ready;
}

/// Done when the host knows the app and bramd reaches the runtime. Whatever it says of an app that
/// it does not know means nothing.
Outcome requireReachableApp(Context &context, const QString &package)
{
    AppSizeInfo size;
    return readSizeOfApp(context, package, size);
}

Outcome size(const Invocation &invocation, Context &context)
{
    Outcome ready = context.requireRunningRuntime();
    if (!ready.isDone())
        return ready;

    QJsonArray array;
    QVector<QStringList> rows{{QStringLiteral("PKG"), QStringLiteral("CODE"),
                               QStringLiteral("DATA"), QStringLiteral("CACHE")}};
    ExitStatus status = ExitStatus::Done;
    for (const QString &package : invocation.arguments) {
        AppSizeInfo info;
        const Outcome outcome = readSize(context, package, info);
        if (!outcome.isDone()) {
            reportOutcome(outcome);
            status = firstFailure(status, outcome.status);
            if (outcome.status == ExitStatus::DaemonUnreachable ||
                outcome.status == ExitStatus::NotConfirmed)
                break; // each further one would have to be waited for as long
            continue;
        }
        array.append(QJsonObject{{QStringLiteral("package"), package},
                                 {QStringLiteral("code"), number(info.codeSize)},
                                 {QStringLiteral("data"), number(info.dataSize)},
                                 {QStringLiteral("cache"), number(info.cacheSize)}});
        rows.append(
            {package, inWords(info.codeSize), inWords(info.dataSize), inWords(info.cacheSize)});
    }
    context.out().answer(invocation.has(QStringLiteral("--json")), array,
                         array.isEmpty() ? QStringList() : TextTable::lines(rows));
    return {status, QString()};
}

/// What the runtime can delete of an app.
struct Clearable
{
    qint64 AppSizeInfo::*size;
    QString name;
    QDBusPendingReply<> (BramdProxy::*request)(const QString &packageName);
};

/// Looks until less is left than before, or nothing.
Outcome confirmCleared(Context &context, const QString &package, const Clearable &what,
                       const AppSizeInfo &before, int timeoutMs)
{
    AppSizeInfo after;
    Outcome asked;
    const auto isCleared = [&] {
        asked = readSize(context, package, after);
        return !asked.isDone() || after.*what.size <= 0 || after.*what.size < before.*what.size;
    };
    const bool inTime = Waiting::until(isCleared, timeoutMs);
    if (!asked.isDone())
        return asked;
    if (!inTime) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("bramd took it, but the %1 of %2 still has %3. “bramctl size %2” "
                               "shows when that changes, “journalctl -u umbravm” what the runtime "
                               "does.")
                    .arg(what.name, package, inWords(after.*what.size))};
    }
    if (before.*what.size == 0 && after.*what.size == 0) {
        context.out().line(
            QStringLiteral("There was nothing to clear in the %1 of %2.").arg(what.name, package));
        return {};
    }
    context.out().line(
        QStringLiteral("Cleared the %1 of %2: it had %3 and has %4.")
            .arg(what.name, package, inWords(before.*what.size), inWords(after.*what.size)));
    return {};
}

/// Only data are lost for good: the question is about these.
bool isConfirmed(const Invocation &invocation, const QString &package, const AppSizeInfo &before)
{
    return invocation.has(QStringLiteral("--yes")) ||
           Confirmation::ask(QStringLiteral("Delete everything that %1 has stored (%2)? It cannot "
                                            "be brought back.")
                                 .arg(package, inWords(before.dataSize)));
}

Outcome clear(const Invocation &invocation, Context &context, const Clearable &what)
{
    const int timeoutMs = Waiting::timeoutMs(invocation, ClearTimeoutS);
    if (timeoutMs < 0)
        return CommonTexts::badTimeout();
    const QString &package = invocation.arguments.first();
    AppSizeInfo before;
    Outcome known = readSizeOfApp(context, package, before);
    if (!known.isDone())
        return known;
    if (what.size == &AppSizeInfo::dataSize && !isConfirmed(invocation, package, before)) {
        return {ExitStatus::Refused,
                QStringLiteral("Nothing was deleted. Answer “y”, or give --yes.")};
    }
    const Outcome taken =
        context.daemon().finish((context.daemon().proxy().*what.request)(package));
    return taken.isDone() ? confirmCleared(context, package, what, before, timeoutMs) : taken;
}

Outcome clearCache(const Invocation &invocation, Context &context)
{
    return clear(
        invocation, context,
        {&AppSizeInfo::cacheSize, QStringLiteral("cache"), &BramdProxy::deleteAppCacheFiles});
}

Outcome clearData(const Invocation &invocation, Context &context)
{
    return clear(invocation, context,
                 {&AppSizeInfo::dataSize, QStringLiteral("data"), &BramdProxy::clearAppUserData});
}

Outcome stopApp(const Invocation &invocation, Context &context)
{
    const QString &package = invocation.arguments.first();
    Outcome ready = requireReachableApp(context, package);
    if (!ready.isDone())
        return ready;
    Outcome taken = context.daemon().finish(context.daemon().proxy().forceStopApp(package));
    if (taken.isDone()) {
        context.out().line(QStringLiteral("bramd has taken it: %1 is to stop. “bramctl monitor” "
                                          "shows apps that end.")
                               .arg(package));
    }
    return taken;
}

Outcome readBoot(Context &context, const QString &package, bool &isAllowed)
{
    QDBusPendingReply<bool> reply = context.daemon().proxy().getAppStartOnBootup(package);
    Outcome outcome = context.daemon().finish(reply);
    isAllowed = outcome.isDone() && reply.value();
    return outcome;
}

QString bootText(const QString &package, bool isAllowed)
{
    return isAllowed ? QStringLiteral("%1 may start with the runtime.").arg(package)
                     : QStringLiteral("%1 may not start with the runtime.").arg(package);
}

Outcome boot(const Invocation &invocation, Context &context)
{
    const QString &package = invocation.arguments.first();
    Outcome ready = requireReachableApp(context, package);
    if (!ready.isDone())
        return ready;
    if (invocation.arguments.size() > 1) {
        const bool wanted = invocation.arguments.last() == QLatin1String("on");
        Outcome taken =
            context.daemon().finish(context.daemon().proxy().setAppStartOnBootup(package, wanted));
        if (!taken.isDone())
            return taken;
        bool isAllowed = false;
        Outcome asked = readBoot(context, package, isAllowed);
        if (!asked.isDone())
            return asked;
        if (isAllowed != wanted) {
            return {ExitStatus::Refused,
                    QStringLiteral("The runtime has not changed it: %1 “journalctl -u bramd” may "
                                   "tell why.")
                        .arg(bootText(package, isAllowed))};
        }
    }

    bool isAllowed = false;
    Outcome asked = readBoot(context, package, isAllowed);
    if (!asked.isDone())
        return asked;
    context.out().answer(invocation.has(QStringLiteral("--json")),
                         QJsonObject{{QStringLiteral("package"), package},
                                     {QStringLiteral("startsAtBoot"), isAllowed}},
                         {bootText(package, isAllowed)});
    return {};
}

} // namespace

QVector<Command> appCommands()
{
    const QVector<Option> json{CommonTexts::jsonOption()};
    const Option timeout = CommonTexts::timeoutOption(ClearTimeoutS);
    const Argument package = CommonTexts::packageArgument();
    const Argument packages{package.name, package.kind, false, true};
    return {
        {QStringLiteral("list"),
         {},
         json,
         QStringLiteral("List the apps that the host knows"),
         QStringLiteral("Reads the desktop entries; neither bramd nor the runtime has to run."),
         list,
         Effect::Answers},
        {QStringLiteral("size"),
         {packages},
         json,
         QStringLiteral("Show what apps take on disk"),
         QStringLiteral("The runtime has to run."),
         size,
         Effect::Answers},
        {QStringLiteral("clear-cache"),
         {package},
         {timeout},
         QStringLiteral("Delete what an app can fetch again"),
         QStringLiteral("Waits until the app takes less. The runtime has to run."),
         clearCache},
        {QStringLiteral("clear-data"),
         {package},
         {{QStringLiteral("--yes"), QString(), ArgumentKind::Word,
           QStringLiteral("Do not ask first"), false},
          timeout},
         QStringLiteral("Delete everything that an app has stored"),
         QStringLiteral("Asks first, and waits until the app takes less. The runtime has to run."),
         clearData},
        {QStringLiteral("stop-app"),
         {package},
         {},
         QStringLiteral("End an app that runs"),
         QStringLiteral("The runtime has to run."),
         stopApp},
        {QStringLiteral("boot"),
         {package, {QStringLiteral("on|off"), ArgumentKind::OnOff, true, false}},
         json,
         QStringLiteral("Show or change whether an app may start with the runtime"),
         QStringLiteral("The runtime has to run."),
         boot},
    };
}
