#include "tools/common/installable.h"

#include "tools/common/fileargument.h"
#include "tools/common/hostfile.h"

Installable Installable::examine(const Location &location)
{
    const QString &path = location.address;
    if (location.isFile && FileArgument::isSplitArchive(path)) {
        return {{ExitStatus::Refused,
                 QStringLiteral("“%1” holds an app split into several packages, which cannot be "
                                "installed: get the app as one .apk file.")
                     .arg(path)},
                {}};
    }
    Installable file;
    file.outcome = HostFile::checkForReading(location);
    if (!file.outcome.isDone())
        return file;
    file.apk = ApkFile::read(path);
    if (!file.apk.isApk()) {
        file.outcome = {
            ExitStatus::Refused,
            QStringLiteral("“%1” is no Android package, or a damaged one: get it again.")
                .arg(path)};
    }
    return file;
}
