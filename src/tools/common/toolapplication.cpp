#include "tools/common/toolapplication.h"

#include "tools/common/standardoutput.h"

#include <QLoggingCategory>

namespace {

/// The application object opens descriptors as it is made.
int &withStandardStreams(int &argc)
{
    occupyStandardStreams();
    return argc;
}

} // namespace

ToolApplication::ToolApplication(int &argc, char **argv, const QString &name)
    : QCoreApplication(withStandardStreams(argc), argv)
{
    setApplicationName(name);
    setApplicationVersion(QStringLiteral(BRAMD_VERSION));
    // What the shared code logs for the daemon is nothing for the users of tools.
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
}

QStringList ToolApplication::words() const
{
    return arguments().mid(1);
}

int ToolApplication::print(const QString &text)
{
    return reportOutcome(writeToStandardOutput(text.toUtf8()));
}

int ToolApplication::printVersion()
{
    return print(QStringLiteral("%1 %2\n").arg(applicationName(), applicationVersion()));
}
