#include "tools/launcher/launchrequest.h"

namespace {

LaunchCommand wrong(const QString &what)
{
    LaunchCommand command;
    command.outcome = {ExitStatus::Usage, what + QStringLiteral(" See “bramd-launcher --help”.")};
    return command;
}

} // namespace

LaunchCommand readLaunchCommand(QStringList arguments)
{
    const QString opening = QStringLiteral("-d");
    if (arguments.size() < 2 || arguments.at(arguments.size() - 2) == opening)
        return wrong(QStringLiteral("PACKAGE.apk and PACKAGE/CLASS are needed."));
    const QString activity = arguments.takeLast();
    const QString apk = arguments.takeLast();

    const QString suffix = QStringLiteral(".apk");
    const QString package = apk.chopped(apk.endsWith(suffix) ? suffix.size() : 0);
    if (package.isEmpty() || package == apk)
        return wrong(QStringLiteral("“%1” is not PACKAGE.apk.").arg(apk));
    const int slash = activity.indexOf(QLatin1Char('/'));
    if (slash < 1 || slash == activity.size() - 1)
        return wrong(QStringLiteral("“%1” is not PACKAGE/CLASS.").arg(activity));
    if (activity.left(slash) != package) {
        return wrong(QStringLiteral("“%1” and “%2” name different packages.").arg(apk, activity));
    }

    if (!arguments.isEmpty() && arguments.takeFirst() != opening)
        return wrong(QStringLiteral("What is to be opened stands behind “-d”."));
    // Desktops that have nothing to open may put an empty word there.
    arguments.removeAll(QString());
    LaunchCommand command;
    command.request = {package, activity.mid(slash + 1), arguments};
    return command;
}
