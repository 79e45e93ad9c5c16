#include "config/catalogues.h"
#include "tools/common/toolapplication.h"
#include "tools/opener/apkopener.h"

namespace {

constexpr char Help[] =
    R"(Usage: bramd-open-apk FILE...
Has Android apps installed from APK files, and tells with notices on the desktop what happens. This
is what a file manager runs when an APK file is opened.

  --help     shows this
  --version  shows the version

It ends with 0 when bramd has taken every file, else with 1 when one was refused, 2 when the command
line makes no sense, 3 when bramd did not answer in time, 4 when bramd cannot be reached, 5 when the
Android runtime is not available.
)";

/// Every file is tried; the first failure decides the exit status.
int openAll(const QStringList &files)
{
    ApkOpener opener;
    ExitStatus status = ExitStatus::Done;
    for (const QString &file : files) {
        const Outcome outcome = opener.open(file);
        reportOutcome(outcome);
        status = firstFailure(status, outcome.status);
    }
    return static_cast<int>(status);
}

} // namespace

int main(int argc, char *argv[])
{
    const ToolApplication application(argc, argv, QStringLiteral("bramd-open-apk"));
    const Catalogues catalogues;
    const QStringList words = application.words();
    if (words == QStringList{QStringLiteral("--help")})
        return ToolApplication::print(QString(QLatin1String(Help)));
    if (words == QStringList{QStringLiteral("--version")})
        return ToolApplication::printVersion();
    if (words.isEmpty()) {
        return reportOutcome(
            {ExitStatus::Usage, QStringLiteral("A file is needed. See “bramd-open-apk --help”.")});
    }
    return openAll(words);
}
