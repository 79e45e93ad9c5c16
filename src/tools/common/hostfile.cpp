#include "tools/common/hostfile.h"

#include "config/pathmapping.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace HostFile {

namespace {

Outcome refused(const QString &sentence, const QString &path)
{
    return {ExitStatus::Refused, sentence.arg(path)};
}

} // namespace

QString homeOfUser()
{
    return geteuid() == 0 ? QString() : QDir::homePath();
}

bool isSeenByRuntime(const QString &path, const QString &home)
{
    if (PathMapping::toAndroidPath(path) == path)
        return false;
    const QString homes = QStringLiteral("/home/");
    if (!path.startsWith(QLatin1String("/home")))
        return true;
    if (home.startsWith(homes))
        return path == home || path.startsWith(home + QLatin1Char('/'));
    return path.startsWith(homes) && path.size() > homes.size();
}

Outcome missing(const QString &path)
{
    // What is not UTF-8 on the command line has arrived as this, and the file is not to be found.
    if (path.contains(QChar::ReplacementCharacter)) {
        return refused(QStringLiteral("The name “%1” is not in UTF-8, or there is no such file: "
                                      "rename it, e.g. in a file manager."),
                       path);
    }
    return refused(QStringLiteral("There is no file “%1”. Look at its spelling, and whether it was "
                                  "moved or deleted."),
                   path);
}

Outcome notSeenByRuntime(const QString &path)
{
    return refused(QStringLiteral("The runtime does not see “%1”: copy it into your home directory "
                                  "or to a memory card."),
                   path);
}

Outcome checkForApps(const Location &location)
{
    const bool isThere = !location.isFile || QFileInfo::exists(location.address);
    return isThere ? Outcome() : missing(location.address);
}

Outcome checkForReading(const Location &location)
{
    if (!location.isFile) {
        return refused(QStringLiteral("“%1” is not on this phone: download it first."),
                       location.address);
    }
    const QFileInfo info(location.address);
    if (!info.exists())
        return missing(location.address);
    if (!info.isFile()) {
        return refused(QStringLiteral("“%1” is no regular file: name a file."), location.address);
    }
    if (!info.isReadable()) {
        return refused(
            QStringLiteral("You cannot read “%1”: look at its permissions with “ls -l”."),
            location.address);
    }
    return {};
}

} // namespace HostFile
