#include "tools/common/toolapplication.h"

#include "tools/common/exitstatus.h"

#include <QTextStream>

ToolApplication::ToolApplication(int &argc, char **argv, const QString &name)
    : QCoreApplication(argc, argv)
{
    setApplicationName(name);
    setApplicationVersion(QStringLiteral(BRAMD_VERSION));
}

QStringList ToolApplication::words() const
{
    return arguments().mid(1);
}

int ToolApplication::print(const QString &text)
{
    QTextStream(stdout) << text;
    return static_cast<int>(ExitStatus::Done);
}

int ToolApplication::printVersion()
{
    return print(QStringLiteral("%1 %2\n").arg(applicationName(), applicationVersion()));
}
