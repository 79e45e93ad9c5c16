#include "launcher/packageblacklist.h"

#include <QFile>

namespace {

QStringList readLines(const QString &path)
{
    QStringList lines;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return lines;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (!line.isEmpty())
            lines.append(line);
    }
    return lines;
}

} // namespace

PackageBlacklist::PackageBlacklist()
{
    const QStringList files{
        QStringLiteral("/etc/bramd/app-blacklist"),
        QString::fromUtf8(qgetenv("BRAMD_PACKAGE_BLACKLIST_PATH")),
    };
    for (const QString &file : files) {
        if (!file.isEmpty())
            m_packages += readLines(file);
    }
}

bool PackageBlacklist::contains(const QString &packageName) const
{
    return m_packages.contains(packageName);
}
