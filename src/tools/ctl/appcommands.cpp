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

constexpr int ClearTimeoutMs = 10000;

/// JSON has no larger numbers; no app comes near.
double number(qint64 bytes)
{
    return static_cast<double>(bytes);
}

QString inWords(qint64 bytes)
{
    return TextTable::bytes(static_cast<quint64>(std::max<qint64>(bytes, 0)));
}

QJsonObject inJson(const App &app)
{
    return {
        {QStringLiteral("package"), app.packageName},
        {QStringLiteral("name"), app.name},
        {QStringLiteral("version"), app.version},
        {QStringLiteral("hidden"), app.isHidden},
        {QStringLiteral("launchers"), QJsonArray::fromStringList(app.launchers)},
        {QStringLiteral("opens"), QJsonArray::fromStringList(app.opens)},
    };
}

Outcome list(const Invocation &invocation, Context &context)
{
    const QVector<App> apps = AppEntries::installedApps();
    QJsonArray array;
    QVector<QStringList> rows{
        {QStringLiteral("PKG"), QStringLiteral("NAME"), QStringLiteral("VERSION"), QString()}};
    for (const App &app : apps) {
        array.append(inJson(app));
        rows.append({app.packageName, app.name, app.version,
                     app.isHidden ? QStringLiteral("not in the app grid") : QString()});
    }
    const QStringList none{QStringLiteral("No apps are installed. They appear here when the "
                                          "runtime has announced them.")};
    context.out().answer(invocation.has(QStringLiteral("--json")), array,
                         apps.isEmpty() ? none : TextTable::lines(rows));
    return {};
}

/// Whatever the runtime says of an app that it does not know means nothing.
Outcome requireApp(Context &context, const QString &package)
{
    const Outcome ready = context.requireRunningRuntime();
    if (!ready.isDone())
        return ready;
    return AppEntries::isInstalled(package) ? Outcome() : CommonTexts::notInstalled(package);
}

Outcome readSize(Context &context, const QString &package, AppSizeInfo &size)
{
    if (!AppEntries::isInstalled(package))
        return CommonTexts::notInstalled(package);
    QDBusPendingReply<AppSizeInfo> reply = context.daemon().proxy().getAppSize(package);
    const Outcome outcome = context.daemon().finish(reply);
    if (!outcome.isDone())
        return outcome;
    size = reply.value();
    if (size == AppSizeInfo()) {
        return {ExitStatus::Refused,
                QStringLiteral("The runtime tells no size of %1. “journalctl -u bramd” may tell "
                               "why.")
                    .arg(package)};
    }
    return {};
}

Outcome size(const Invocation &invocation, Context &context)
{
    const Outcome ready = context.requireRunningRuntime();
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
            status = outcome.status;
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

/// The size of an app that the host must know, on a runtime that must run.
Outcome readSizeOfApp(Context &context, const QString &package, AppSizeInfo &size)
{
    const Outcome ready = context.requireRunningRuntime();
    return ready.isDone() ? readSize(context, package, size) : ready;
}

Outcome clearCache(const Invocation &invocation, Context &context)
{
    const QString &package = invocation.arguments.first();
    AppSizeInfo before;
    const Outcome known = readSizeOfApp(context, package, before);
    if (!known.isDone())
        return known;

    const Outcome taken =
        context.daemon().finish(context.daemon().proxy().deleteAppCacheFiles(package));
    if (!taken.isDone())
        return taken;
    AppSizeInfo after;
    Outcome asked;
    const auto isCleared = [&] {
        asked = readSize(context, package, after);
        return !asked.isDone() || after.cacheSize == 0 || after.cacheSize < before.cacheSize;
    };
    const bool inTime = Waiting::until(isCleared, ClearTimeoutMs);
    if (!asked.isDone())
        return asked;
    if (!inTime) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("bramd took it, but the cache of %1 still has %2.")
                    .arg(package, inWords(after.cacheSize))};
    }
    context.out().line(QStringLiteral("Cleared the cache of %1: it had %2 and has %3.")
                           .arg(package, inWords(before.cacheSize), inWords(after.cacheSize)));
    return {};
}

Outcome clearData(const Invocation &invocation, Context &context)
{
    const QString &package = invocation.arguments.first();
    AppSizeInfo before;
    const Outcome known = readSizeOfApp(context, package, before);
    if (!known.isDone())
        return known;
    const QString question =
        QStringLiteral("Delete everything that %1 has stored (%2)? It cannot be brought back.")
            .arg(package, inWords(before.dataSize));
    if (!invocation.has(QStringLiteral("--yes")) && !Confirmation::ask(question)) {
        return {ExitStatus::Refused,
                QStringLiteral("Nothing was deleted. Answer “y”, or give --yes.")};
    }

    const Outcome taken =
        context.daemon().finish(context.daemon().proxy().clearAppUserData(package));
    if (taken.isDone()) {
        context.out().line(QStringLiteral("bramd has taken it; what the runtime did of it shows "
                                          "in “bramctl size %1”.")
                               .arg(package));
    }
    return taken;
}

Outcome stopApp(const Invocation &invocation, Context &context)
{
    const QString &package = invocation.arguments.first();
    const Outcome ready = requireApp(context, package);
    if (!ready.isDone())
        return ready;
    const Outcome taken = context.daemon().finish(context.daemon().proxy().forceStopApp(package));
    if (taken.isDone()) {
        context.out().line(QStringLiteral("bramd has asked the runtime to stop %1; “bramctl "
                                          "monitor” shows apps that end.")
                               .arg(package));
    }
    return taken;
}

Outcome readBoot(Context &context, const QString &package, bool &isAllowed)
{
    QDBusPendingReply<bool> reply = context.daemon().proxy().getAppStartOnBootup(package);
    const Outcome outcome = context.daemon().finish(reply);
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
    const Outcome ready = requireApp(context, package);
    if (!ready.isDone())
        return ready;
    if (invocation.arguments.size() > 1) {
        const bool wanted = invocation.arguments.last() == QLatin1String("on");
        const Outcome taken =
            context.daemon().finish(context.daemon().proxy().setAppStartOnBootup(package, wanted));
        if (!taken.isDone())
            return taken;
        bool isAllowed = false;
        const Outcome asked = readBoot(context, package, isAllowed);
        if (!asked.isDone())
            return asked;
        if (isAllowed != wanted) {
            return {ExitStatus::Refused, QStringLiteral("The runtime has not changed it: %1")
                                             .arg(bootText(package, isAllowed))};
        }
    }

    bool isAllowed = false;
    const Outcome asked = readBoot(context, package, isAllowed);
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
    const Argument package = CommonTexts::packageArgument();
    const Argument packages{package.name, package.kind, false, true};
    return {
        {QStringLiteral("list"),
         {},
         json,
         QStringLiteral("List the apps that the host knows"),
         QStringLiteral("Reads the desktop entries; neither bramd nor the runtime has to run."),
         list},
        {QStringLiteral("size"),
         {packages},
         json,
         QStringLiteral("Show what apps take on disk"),
         QStringLiteral("The runtime has to run."),
         size},
        {QStringLiteral("clear-cache"),
         {package},
         {},
         QStringLiteral("Delete what an app can fetch again"),
         QStringLiteral("The runtime has to run."),
         clearCache},
        {QStringLiteral("clear-data"),
         {package},
         {{QStringLiteral("--yes"), QString(), ArgumentKind::Word,
           QStringLiteral("Do not ask first"), false}},
         QStringLiteral("Delete everything that an app has stored"),
         QStringLiteral("Asks first. The runtime has to run."),
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
