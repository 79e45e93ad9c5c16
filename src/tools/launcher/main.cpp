#include "tools/common/toolapplication.h"
#include "tools/launcher/launcher.h"
#include "tools/launcher/launchrequest.h"

namespace {

constexpr char Help[] =
    R"(Usage: bramd-launcher PACKAGE.apk PACKAGE/CLASS
       bramd-launcher -d [FILE-OR-URL...] PACKAGE.apk PACKAGE/CLASS
Starts an activity of an Android app, or has it open files and URLs. This is
what the desktop entries of Android apps run.

  --help     shows this
  --version  shows the version

It ends with 0 when bramd has taken the request, else with 1 when it was
refused, 2 when the command line makes no sense, 3 when bramd did not answer in
time, 4 when bramd cannot be reached, 5 when the Android runtime is not
available.
)";

} // namespace

int main(int argc, char *argv[])
{
    const ToolApplication application(argc, argv, QStringLiteral("bramd-launcher"));
    const QStringList words = application.words();
    if (words == QStringList{QStringLiteral("--help")})
        return ToolApplication::print(QString(QLatin1String(Help)));
    if (words == QStringList{QStringLiteral("--version")})
        return ToolApplication::printVersion();

    const LaunchCommand command = readLaunchCommand(words);
    if (!command.outcome.isDone())
        return reportOutcome(command.outcome);
    return reportOutcome(Launcher().launch(command.request));
}
