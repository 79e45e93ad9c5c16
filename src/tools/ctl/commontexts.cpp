#include "tools/ctl/commontexts.h"

#include "config/runtimetext.h"
#include "launcher/launcherpaths.h"
#include "tools/ctl/doctor.h"
#include "tools/ctl/regularfile.h"

namespace CommonTexts {

Option jsonOption()
{
    return {QStringLiteral("--json"), QString(), ArgumentKind::Word,
            QStringLiteral("Answer in JSON"), false};
}

Option timeoutOption(int defaultSeconds)
{
    return {QStringLiteral("--timeout"), QStringLiteral("SECONDS"), ArgumentKind::Word,
            QStringLiteral("How long to wait, by default %1 s").arg(defaultSeconds), false};
}

Argument packageArgument()
{
    return {QStringLiteral("PKG"), ArgumentKind::Package, false, false};
}

Outcome badTimeout()
{
    return {ExitStatus::Usage,
            QStringLiteral("--timeout takes a number of seconds between 1 and 86400.")};
}

Outcome requirePackageName(const QString &name)
{
    if (RuntimeText::isUsableName(name))
        return {};
    return {ExitStatus::Refused,
            QStringLiteral("“%1” is no name of a package. “bramctl list” shows those of apps.")
                .arg(name)};
}

Outcome requireEntries()
{
    const QString path = LauncherPaths::applicationsDir();
    if (!RegularFile::isClosedDirectory(path))
        return {};
    const Finding finding = Doctor::closedDirectory(path);
    return {ExitStatus::Refused, finding.what + QLatin1Char(' ') + finding.advice};
}

Outcome notInstalled(const QString &packageName)
{
    Outcome readable = requireEntries();
    if (!readable.isDone())
        return readable;
    return {ExitStatus::Refused,
            QStringLiteral("The host knows no app %1. “bramctl list” shows those it knows.")
                .arg(packageName)};
}

} // namespace CommonTexts
