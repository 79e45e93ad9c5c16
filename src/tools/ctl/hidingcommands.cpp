#include "tools/ctl/hidingcommands.h"

#include "launcher/publicfile.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/blacklistfile.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/regularfile.h"
#include "tools/ctl/texttable.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <unistd.h>

namespace {

Outcome cannotWrite()
{
    return {ExitStatus::Refused,
            QStringLiteral("%1 cannot be written. Look at its permissions, and whether the disk is "
                           "full.")
                .arg(BlacklistFile::path())};
}

Outcome unreadable(const QString &path)
{
    return {ExitStatus::Refused,
            QStringLiteral("%1 cannot be read: look at its permissions.").arg(path)};
}

/// Nothing lists again what was made visible or hidden before both of these have happened.
QString whenItCounts()
{
    return QStringLiteral("It counts when bramd has started anew and the runtime has announced its "
                          "apps: “systemctl restart bramd”, then “bramctl restart”.");
}

/// Of the lists, only the administrator's is changed here. What the device's own hides stays
/// hidden.
Outcome requireVisibleOnDevice(const QString &package)
{
    const QString path = BlacklistFile::secondPath();
    const RegularFile file = RegularFile::read(path);
    if (!file.isRead() && file.state != RegularFile::State::Missing)
        return unreadable(path);
    if (!BlacklistFile::packages(file.content).contains(package))
        return {};
    return {ExitStatus::Refused,
            QStringLiteral("%1 stays hidden by the list of the device, %2, which is not changed "
                           "here: edit it, or ask the device's maker.")
                .arg(package, path)};
}

Outcome change(const Invocation &invocation, Context &context, bool hide)
{
    const QString &package = invocation.arguments.first();
    Outcome named = CommonTexts::requirePackageName(package);
    if (!named.isDone())
        return named;
    if (geteuid() != 0) {
        return {ExitStatus::Refused,
                QStringLiteral("The list of hidden apps belongs to root: try “sudo bramctl %1 %2”.")
                    .arg(hide ? QStringLiteral("hide") : QStringLiteral("unhide"), package)};
    }
    const QString path = BlacklistFile::path();
    const RegularFile file = RegularFile::read(path);
    if (!file.isRead() && file.state != RegularFile::State::Missing)
        return unreadable(path);

    const QByteArray content = hide ? BlacklistFile::with(file.content, package)
                                    : BlacklistFile::without(file.content, package);
    if (content == file.content) {
        Outcome visible = hide ? Outcome() : requireVisibleOnDevice(package);
        if (!visible.isDone())
            return visible;
        context.out().line(hide ? QStringLiteral("%1 is on the list already.").arg(package)
                                : QStringLiteral("%1 is not on the list.").arg(package));
        return {};
    }
    if (!QDir().mkpath(QFileInfo(path).path()) ||
        PublicFile::write(path, content) != PublicFile::WriteResult::Written)
        return cannotWrite();
    context.out().line(
        hide ? QStringLiteral("%1 is on the list of hidden apps.").arg(package)
             : QStringLiteral("%1 is no longer on the list of hidden apps.").arg(package));
    if (hide && !AppEntries::isInstalled(package)) {
        context.out().line(
            QStringLiteral("The host knows no app of this name yet; “bramctl list” shows those it "
                           "knows."));
    }
    Outcome visible = hide ? Outcome() : requireVisibleOnDevice(package);
    if (visible.isDone())
        context.out().line(whenItCounts());
    return visible;
}

Outcome hide(const Invocation &invocation, Context &context)
{
    return change(invocation, context, true);
}

Outcome unhide(const Invocation &invocation, Context &context)
{
    return change(invocation, context, false);
}

Outcome hidden(const Invocation &invocation, Context &context)
{
    QJsonArray array;
    QVector<QStringList> rows{{QStringLiteral("PKG"), QStringLiteral("LIST")}};
    for (const QString &path : {BlacklistFile::path(), BlacklistFile::secondPath()}) {
        const RegularFile file = path.isEmpty() ? RegularFile() : RegularFile::read(path);
        if (!file.isRead() && file.state != RegularFile::State::Missing)
            return unreadable(path);
        const QStringList packages = BlacklistFile::packages(file.content);
        for (const QString &package : packages) {
            array.append(
                QJsonObject{{QStringLiteral("package"), package}, {QStringLiteral("list"), path}});
            rows.append({package, path});
        }
    }
    context.out().answer(invocation.has(QStringLiteral("--json")), array,
                         array.isEmpty() ? QStringList(QStringLiteral("No app is on the list."))
                                         : TextTable::lines(rows));
    return {};
}

} // namespace

QVector<Command> hidingCommands()
{
    const Argument package = CommonTexts::packageArgument();
    const Argument hiddenPackage{package.name, ArgumentKind::Hidden, false, false};
    return {
        {QStringLiteral("hide"),
         {package},
         {},
         QStringLiteral("Put an app on the list of hidden apps"),
         QStringLiteral(
             "A hidden app stays installed and runs in the runtime, but the host does "
             "not offer it: it has no icon in the app grid, opens no files and links, "
             "and takes nothing that is shared. Only root can change the list. It counts "
             "when bramd has started anew and the runtime has announced its apps."),
         hide},
        {QStringLiteral("unhide"),
         {hiddenPackage},
         {},
         QStringLiteral("Take an app off the list of hidden apps"),
         QStringLiteral("The counterpart of “hide”, with the same conditions."),
         unhide},
        {QStringLiteral("hidden"),
         {},
         {CommonTexts::jsonOption()},
         QStringLiteral("List the hidden apps"),
         QStringLiteral("Of the administrator's list, and of the device's if there is one."),
         hidden,
         Effect::Answers},
    };
}
