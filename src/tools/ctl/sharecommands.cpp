#include "tools/ctl/sharecommands.h"

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/sharearguments.h"
#include "tools/ctl/shareplan.h"
#include "tools/ctl/sharetarget.h"
#include "tools/ctl/texttable.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace {

/// Why there are no targets to show or to choose from.
QString reason(RegisteredTargets::State state)
{
    switch (state) {
    case RegisteredTargets::State::Filled:
        break;
    case RegisteredTargets::State::Empty:
        return QStringLiteral("No app takes what is shared. Apps are known here once the runtime "
                              "runs and has announced them: “bramctl start”.");
    case RegisteredTargets::State::Missing:
        return QStringLiteral("There is no sharing registry yet. bramd makes it when it starts: "
                              "look at “systemctl status bramd”.");
    case RegisteredTargets::State::Unreadable:
        return QStringLiteral("You cannot read the sharing registry, "
                              "/var/lib/bramd/sharing.json. “bramctl doctor” tells more.");
    case RegisteredTargets::State::Damaged:
        return QStringLiteral("The sharing registry, /var/lib/bramd/sharing.json, is damaged. "
                              "“systemctl restart bramd” makes it anew.");
    }
    return QString();
}

bool isBroken(RegisteredTargets::State state)
{
    return state != RegisteredTargets::State::Filled && state != RegisteredTargets::State::Empty;
}

Outcome targets(const Invocation &invocation, Context &context)
{
    const RegisteredTargets registry = RegisteredTargets::read();
    if (isBroken(registry.state))
        return {ExitStatus::Refused, reason(registry.state)};
    QJsonArray array;
    QVector<QStringList> rows{{QStringLiteral("PKG/CLASS"), QStringLiteral("CAPTION"),
                               QStringLiteral("FILES"), QStringLiteral("TAKES")}};
    for (const ShareTarget &target : registry.targets) {
        array.append(QJsonObject{
            {QStringLiteral("target"), target.component()},
            {QStringLiteral("package"), target.packageName},
            {QStringLiteral("class"), target.className},
            {QStringLiteral("label"), target.label},
            {QStringLiteral("caption"), target.caption},
            {QStringLiteral("multi"), target.takesSeveral},
            {QStringLiteral("mimetypes"), QJsonArray::fromStringList(target.mimeTypes)}});
        rows.append({target.component(), target.caption,
                     target.takesSeveral ? QStringLiteral("several") : QStringLiteral("one"),
                     target.mimeTypes.join(QLatin1Char(' '))});
    }
    QStringList lines = TextTable::lines(rows);
    if (array.isEmpty() && context.unit().read().isActive()) {
        lines = QStringList(QStringLiteral("No app takes what is shared. “bramctl doctor” tells "
                                           "if one should."));
    } else if (array.isEmpty()) {
        lines = QStringList(reason(registry.state));
    }
    context.out().answer(invocation.has(QStringLiteral("--json")), array, lines);
    return {};
}

Outcome share(const Invocation &invocation, Context &context)
{
    ShareItems items;
    const Outcome collected = ShareArguments::read(invocation, items);
    if (!collected.isDone())
        return collected;
    const Outcome ready = context.requireStartableRuntime();
    if (!ready.isDone())
        return ready;

    const RegisteredTargets registry = RegisteredTargets::read();
    if (isBroken(registry.state))
        return {ExitStatus::Refused, reason(registry.state)};
    const QString wanted = invocation.value(QStringLiteral("--to"));
    const auto target = std::find_if(
        registry.targets.cbegin(), registry.targets.cend(),
        [&wanted](const ShareTarget &candidate) { return candidate.component() == wanted; });
    if (target == registry.targets.cend()) {
        if (!context.unit().read().isActive()) {
            return {ExitStatus::RuntimeUnavailable,
                    QStringLiteral("It is not known whether %1 takes it: the runtime announces its "
                                   "apps when it runs. Start it with “bramctl start”.")
                        .arg(wanted)};
        }
        return {ExitStatus::Refused,
                QStringLiteral("There is no target %1. “bramctl targets” lists them.").arg(wanted)};
    }
    const QString complaint = SharePlan::complaint(*target, items);
    if (!complaint.isEmpty())
        return {ExitStatus::Refused, complaint};

    const Outcome taken = context.daemon().finish(
        context.daemon().proxy().share(SharePlan::configuration(*target, items)));
    if (taken.isDone()) {
        context.out().line(items.isText()
                               ? QStringLiteral("bramd has taken the text for %1.").arg(wanted)
                               : QStringLiteral("bramd has taken %1 for %2.")
                                     .arg(items.files.join(QLatin1String(", ")), wanted));
    }
    return taken;
}

} // namespace

QVector<Command> shareCommands()
{
    return {
        {QStringLiteral("share"),
         {{QStringLiteral("FILE|TEXT"), ArgumentKind::Item, false, true}},
         {{QStringLiteral("--to"), QStringLiteral("PKG/CLASS"), ArgumentKind::Target,
           QStringLiteral("One of “bramctl targets”"), true},
          {QStringLiteral("--text"), QString(), ArgumentKind::Word,
           QStringLiteral("Take the arguments as text, even if there are such files"), false},
          {QStringLiteral("--title"), QStringLiteral("TITLE"), ArgumentKind::Word,
           QStringLiteral("Title of a text, by default its first line"), false},
          {QStringLiteral("--type"), QStringLiteral("MIME"), ArgumentKind::Word,
           QStringLiteral("MIME type of the files, by default what they look like"), false}},
         QStringLiteral("Share files, or a text, into an app"),
         QStringLiteral(
             "Arguments that are no files are the words of a text, unless they look like "
             "files. Files have to be in your home directory or on a memory card, where "
             "the runtime sees them. Those of a type that begins with “text/” go "
             "as files of any type, because bramd takes that type for a text to be "
             "pasted."),
         share},
        {QStringLiteral("targets"),
         {},
         {CommonTexts::jsonOption()},
         QStringLiteral("List the apps that files and texts can be shared into"),
         QStringLiteral(
             "Reads the sharing registry, which is empty until the runtime has announced "
             "its apps."),
         targets,
         Effect::Answers},
    };
}
