#include "tools/ctl/bugreport.h"

#include "config/runtimetext.h"
#include "tools/ctl/androidversion.h"
#include "tools/ctl/context.h"
#include "tools/ctl/daemonstatus.h"
#include "tools/ctl/doctor.h"
#include "tools/ctl/hostreader.h"
#include "tools/ctl/texttable.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSysInfo>

namespace BugReport {

namespace {

/// Daemon and runtime; an ordinary user may see no more than a remark about permissions.
QStringList journal()
{
    constexpr int TimeoutMs = 20000;

    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("journalctl"),
                  {QStringLiteral("--no-pager"), QStringLiteral("--lines=200"),
                   QStringLiteral("--unit=bramd.service"),
                   QStringLiteral("--unit=umbravm.service")});
    if (!process.waitForFinished(TimeoutMs)) {
        process.kill();
        process.waitForFinished(TimeoutMs);
        return {QStringLiteral("(journalctl: %1)").arg(process.errorString())};
    }
    QStringList lines =
        QString::fromUtf8(process.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString &line : lines)
        line = RuntimeText::singleLine(line);
    return lines;
}

QStringList findings(const HostState &host)
{
    QStringList lines;
    const QVector<Finding> found = Doctor::examine(host);
    for (const Finding &finding : found)
        lines.append(finding.what);
    return lines;
}

QString number(int count, const QString &what)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(what,
                                                    count == 1 ? QString() : QStringLiteral("s"));
}

Section apps()
{
    Section section{QStringLiteral("Apps"), {}, {}};
    QVector<QStringList> rows;
    const QVector<App> installed = AppEntries::installedApps();
    for (const App &app : installed) {
        rows.append({app.packageName, app.name, app.version,
                     QStringLiteral("%1, opens %2")
                         .arg(number(app.launchers.size(), QStringLiteral("launcher")),
                              number(app.opens.size(), QStringLiteral("type")))});
        section.objects.append(AppEntries::inJson(app));
    }
    section.lines = TextTable::lines(rows);
    return section;
}

QStringList versions(const AndroidVersionData &android)
{
    return TextTable::lines(
        {{QStringLiteral("bramctl"), QCoreApplication::applicationVersion()},
         {QStringLiteral("Android"),
          android.sdkVersion == 0 ? QStringLiteral("not known") : AndroidVersion::text(android)},
         {QStringLiteral("system"), QSysInfo::prettyProductName()},
         {QStringLiteral("kernel"), QSysInfo::kernelVersion()},
         {QStringLiteral("machine"), QSysInfo::currentCpuArchitecture()}});
}

QString runtime(const HostState &host)
{
    if (!host.unitState.isEmpty())
        return host.unitState;
    return host.unitComplaint.isEmpty() ? QStringLiteral("not known") : host.unitComplaint;
}

} // namespace

QVector<Section> write(Context &context)
{
    const HostState host = HostReader::read(context);
    return {
        {QStringLiteral("Versions"), versions(host.daemonAnswer.android), {}},
        {QStringLiteral("bramd"),
         {DaemonStatus::text(context.daemonState(), host.daemonAnswer)},
         {}},
        {QStringLiteral("Runtime"), {runtime(host)}, {}},
        {QStringLiteral("Findings"), findings(host), {}},
        apps(),
        {QStringLiteral("Journal"), journal(), {}},
    };
}

QStringList inLines(const QVector<Section> &sections)
{
    QStringList lines;
    for (const Section &section : sections) {
        lines.append(QStringLiteral("== %1").arg(section.title));
        lines += section.lines.isEmpty() ? QStringList(QStringLiteral("(none)")) : section.lines;
        lines.append(QString());
    }
    return lines;
}

} // namespace BugReport
