#include "tools/common/fileargument.h"

#include <QRegularExpression>

namespace FileArgument {

bool isSplitArchive(const QString &path)
{
    const QRegularExpression ending(QStringLiteral("\\.(xapk|apks|apkm)$"),
                                    QRegularExpression::CaseInsensitiveOption);
    return ending.match(path).hasMatch();
}

} // namespace FileArgument
