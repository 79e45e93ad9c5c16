#include "tools/ctl/diagnosiscommands.h"

#include "tools/common/interruption.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/bugreport.h"
#include "tools/ctl/command.h"
#include "tools/ctl/commontexts.h"
#include "tools/ctl/context.h"
#include "tools/ctl/doctor.h"
#include "tools/ctl/hostreader.h"
#include "tools/ctl/signalprinter.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>

namespace {

Outcome monitor(const Invocation &invocation, Context &context)
{
    const Interruption interruption; // before the first look at the bus
    Outcome reachable = context.requireDaemon();
    if (reachable.status == ExitStatus::DaemonUnreachable &&
        context.daemonState() == Context::DaemonState::NoBus)
        return reachable;
    Outcome permitted = context.requirePermission();
    if (!permitted.isDone())
        return permitted;

    SignalPrinter printer(context.out(), context.unit(), invocation.has(QStringLiteral("--json")));
    QEventLoop loop;
    Outcome outcome;
    QObject::connect(&interruption, &Interruption::requested, &loop, &QEventLoop::quit);
    QObject::connect(&printer, &SignalPrinter::outputGone, &loop, &QEventLoop::quit);
    QObject::connect(&printer, &SignalPrinter::busGone, &loop, [&loop, &outcome] {
        outcome = {ExitStatus::DaemonUnreachable,
                   QStringLiteral("The system bus has gone. Look at “systemctl status dbus”.")};
        loop.quit();
    });
    printer.start();
    if (context.out().written().isDone())
        loop.exec();
    return outcome;
}

/// Done only when nothing was found, so that a script can tell.
Outcome doctor(const Invocation &invocation, Context &context)
{
    const QVector<Finding> findings = Doctor::examine(HostReader::read(context));
    QJsonArray array;
    QStringList lines;
    for (const Finding &finding : findings) {
        array.append(QJsonObject{{QStringLiteral("finding"), finding.what},
                                 {QStringLiteral("advice"), finding.advice}});
        lines.append(finding.what);
        lines.append(QLatin1String("  ") + finding.advice);
    }
    if (findings.isEmpty())
        lines.append(QStringLiteral("All is well."));
    context.out().answer(invocation.has(QStringLiteral("--json")), array, lines);
    return {findings.isEmpty() ? ExitStatus::Done : ExitStatus::Refused, QString()};
}

Outcome bugreport(const Invocation &invocation, Context &context)
{
    const QVector<BugReport::Section> sections = BugReport::write(context);
    QJsonObject object;
    for (const BugReport::Section &section : sections)
        object.insert(section.title.toLower(), section.objects.isEmpty()
                                                   ? QJsonArray::fromStringList(section.lines)
                                                   : section.objects);
    context.out().answer(invocation.has(QStringLiteral("--json")), object,
                         BugReport::inLines(sections));
    return {};
}

} // namespace

QVector<Command> diagnosisCommands()
{
    const QVector<Option> json{CommonTexts::jsonOption()};
    return {
        {QStringLiteral("monitor"),
         {},
         json,
         QStringLiteral("Show what happens until it is interrupted"),
         QStringLiteral("The signals of bramd, such as “appClosed”, and the states of bramd and of "
                        "the runtime, one line each. With --json, each line is an object, with the "
                        "names “bramd” and “runtime” for the states. Ctrl-C, or "
                        "SIGTERM, ends it, with the status 0."),
         monitor,
         Effect::Answers},
        {QStringLiteral("doctor"),
         {},
         json,
         QStringLiteral("Look for what is wrong, and tell what to do about it"),
         QStringLiteral("Changes nothing. Done means that nothing was found."),
         doctor,
         Effect::Answers},
        {QStringLiteral("bugreport"),
         {},
         json,
         QStringLiteral("Print all that helps to understand a fault"),
         QStringLiteral("It names your apps: read it before you pass it on."),
         bugreport,
         Effect::Answers},
    };
}
