#include "tools/ctl/openingcommands.h"

#include "tools/common/daemonclient.h"
#include "tools/common/hostfile.h"
#include "tools/common/location.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/intentextras.h"

#include <QDir>

#include <algorithm>

namespace {

const QString MainAction = QStringLiteral("android.intent.action.MAIN");

/// Nobody is told whether an activity has come up.
Outcome confirmTaken(Context &context, const Outcome &outcome, const QString &what)
{
    if (outcome.isDone()) {
        context.out().line(
            QStringLiteral("bramd has taken it: %1. The runtime is started if needed.").arg(what));
    }
    return outcome;
}

Outcome launch(const Invocation &invocation, Context &context)
{
    Outcome ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;
    const QString &argument = invocation.arguments.first();
    const int separator = argument.indexOf(QLatin1Char('/'));
    const QString package = argument.left(separator);
    const QVector<App> apps = AppEntries::appsOf(AppEntries::readAll());
    const auto app = std::find_if(apps.cbegin(), apps.cend(), [&package](const App &candidate) {
        return candidate.packageName == package;
    });
    if (app == apps.cend())
        return CommonTexts::notInstalled(package);

    if (separator < 0) {
        return confirmTaken(context,
                            context.daemon().finish(context.daemon().proxy().launchApp(package)),
                            QStringLiteral("%1 is to open").arg(app->name));
    }
    const QString className = argument.mid(separator + 1);
    if (app->launchers.isEmpty()) {
        return {
            ExitStatus::Refused,
            QStringLiteral("%1 has no launchers: it opens what others hand to it. “bramctl list "
                           "--json” and “bramctl targets” show what that is.")
                .arg(package)};
    }
    if (!app->launchers.contains(className)) {
        return {ExitStatus::Refused,
                QStringLiteral("%1 has no launcher %2 but: %3.")
                    .arg(package, className, app->launchers.join(QLatin1String(", ")))};
    }
    return confirmTaken(context,
                        context.daemon().finish(context.daemon().proxy().launchIntent(
                            MainAction, QString(), QString(), package, className, QString(), {})),
                        QStringLiteral("%1 is to open").arg(app->name));
}

Outcome intent(const Invocation &invocation, Context &context)
{
    if (invocation.options.isEmpty()) {
        return {ExitStatus::Usage,
                QStringLiteral("Nothing says what is to be started. “bramctl help intent” lists "
                               "the options that do.")};
    }
    const QString package = invocation.value(QStringLiteral("--package"));
    const QString className = invocation.value(QStringLiteral("--class"));
    if (package.isEmpty() && !className.isEmpty()) {
        return {ExitStatus::Usage, QStringLiteral("--class counts only together with --package.")};
    }
    const IntentExtras extras = IntentExtras::parse(invocation);
    if (!extras.error.isEmpty())
        return {ExitStatus::Usage, extras.error};
    const QString given = invocation.value(QStringLiteral("--data"));
    const Location data = given.isEmpty() ? Location() : locationOf(given, QDir::currentPath());
    Outcome ready = HostFile::checkForApps(data);
    if (ready.isDone())
        ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;

    const QDBusPendingCall call = context.daemon().proxy().launchIntent(
        invocation.value(QStringLiteral("--action")), data.address,
        invocation.value(QStringLiteral("--type")), package, className,
        invocation.value(QStringLiteral("--category")), extras.values);
    Outcome taken = confirmTaken(context, context.daemon().finish(call),
                                 QStringLiteral("the intent goes to the runtime"));
    // It is no mistake: Android's own parts, such as its settings, have no entries on the host.
    if (taken.isDone() && !package.isEmpty() && !AppEntries::isInstalled(package)) {
        context.out().line(QStringLiteral("The host knows no app %1, but the runtime may; “bramctl "
                                          "list” shows those it knows.")
                               .arg(package));
    }
    return taken;
}

Outcome openSettings(const Invocation &invocation, Context &context)
{
    Outcome ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;
    const QString &package = invocation.arguments.first();
    if (!AppEntries::isInstalled(package))
        return CommonTexts::notInstalled(package);
    return confirmTaken(context,
                        context.daemon().finish(context.daemon().proxy().openAppSettings(package)),
                        QStringLiteral("the settings of %1 are to open").arg(package));
}

Outcome licenses(const Invocation &, Context &context)
{
    Outcome ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;
    return confirmTaken(context, context.daemon().finish(context.daemon().proxy().viewLicenses()),
                        QStringLiteral("the legal information is to open"));
}

Option valueOption(const char *name, const char *value, ArgumentKind kind, const char *help)
{
    return {QString::fromLatin1(name), QString::fromLatin1(value), kind, QString::fromUtf8(help),
            false};
}

} // namespace

QVector<Command> openingCommands()
{
    return {
        {QStringLiteral("launch"),
         {{QStringLiteral("PKG[/CLASS]"), ArgumentKind::App, false, false}},
         {},
         QStringLiteral("Open an app"),
         QStringLiteral("CLASS is one of several launchers that an app may have, as “bramctl list "
                        "--json” shows them."),
         launch},
        {QStringLiteral("intent"),
         {},
         {valueOption("--action", "ACTION", ArgumentKind::Word,
                      "By default android.intent.action.MAIN"),
          valueOption("--data", "URL", ArgumentKind::File, "A URL, or a file of the host"),
          valueOption("--type", "MIME", ArgumentKind::Word, "The type of the data"),
          valueOption("--package", "PKG", ArgumentKind::Package, "The app that it is for"),
          valueOption("--class", "CLASS", ArgumentKind::Word, "The app's activity"),
          valueOption("--category", "CATEGORY", ArgumentKind::Word, "One category"),
          valueOption("--extra", "KEY=TEXT", ArgumentKind::Word, "A text for the app; repeatable"),
          valueOption("--extra-int", "KEY=NUMBER", ArgumentKind::Word,
                      "A whole number for the app; repeatable"),
          valueOption("--extra-bool", "KEY=true|false", ArgumentKind::Word,
                      "A truth value for the app; repeatable")},
         QStringLiteral("Start an activity by an Android intent"),
         QStringLiteral("Files of the host are given to the runtime under the path it sees them "
                        "by; they should be in your home directory or on a memory card, "
                        "where it sees them. A file with a name like a URL is written "
                        "“./NAME”."),
         intent},
        {QStringLiteral("open-settings"),
         {CommonTexts::packageArgument()},
         {},
         QStringLiteral("Open Android's settings page of an app"),
         QString(),
         openSettings},
        {QStringLiteral("licenses"),
         {},
         {},
         QStringLiteral("Open the runtime's legal information"),
         QString(),
         licenses},
    };
}
