#include "config/catalogues.h"
#include "tools/common/toolapplication.h"
#include "tools/opener/apkopener.h"

namespace {

constexpr char Help[] =
    R"(Usage: bramd-open-apk FILE...
Has Android apps installed from APK files, and tells with notices on the desktop
what happens. This is what a file manager runs when an APK file is opened.

  --help     shows this
  --version  shows the version

It ends with 0 when bramd has taken every file, else with 1 when one was
refused, 2 when the command line makes no sense, 3 when bramd did not answer in
time, 4 when bramd cannot be reached, 5 when the Android runtime is not
available.
)";

/// What is written like an option is none of a desktop's making: it names files by their paths.
Outcome checkFiles(const QStringList &files)
{
    const QString nextStep = QStringLiteral(" See “bramd-open-apk --help”.");
    if (files.isEmpty())
        return {ExitStatus::Usage, QStringLiteral("A file is needed.") + nextStep};
    for (const QString &file : files) {
        if (file.isEmpty())
            return {ExitStatus::Usage, QStringLiteral("An argument is empty.") + nextStep};
        if (file.startsWith(QLatin1Char('-'))) {
            return {ExitStatus::Usage, QStringLiteral("There is no option %1; a file with such a "
                                                      "name is written “./%1”.")
                                               .arg(file) +
                                           nextStep};
        }
    }
    return {};
}

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
    const Outcome usable = checkFiles(words);
    return usable.isDone() ? openAll(words) : reportOutcome(usable);
}
