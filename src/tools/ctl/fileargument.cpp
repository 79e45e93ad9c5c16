#include "tools/ctl/fileargument.h"

#include "config/pathmapping.h"

#include <QRegularExpression>

namespace FileArgument {

bool isSplitArchive(const QString &path)
{
    const QRegularExpression ending(QStringLiteral("\\.(xapk|apks|apkm)$"),
                                    QRegularExpression::CaseInsensitiveOption);
    return ending.match(path).hasMatch();
}

bool isVisibleToRuntime(const QString &path)
{
    return PathMapping::toAndroidPath(path) != path;
}

} // namespace FileArgument
