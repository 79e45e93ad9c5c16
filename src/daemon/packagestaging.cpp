#include "daemon/packagestaging.h"

#include "daemon/filecopy.h"
#include "daemon/packageform.h"
#include "platform/host/logging.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t rootUser = 0;
constexpr gid_t rootGroup = 0;
constexpr mode_t directoryMode = 0755;
constexpr mode_t fileMode = 0644;

bool isInTheWay(const QString &path)
{
    const QFileInfo file(path);
    return file.exists() || file.isSymLink(); // a link that leads nowhere does not exist
}

/// Names that stand for a directory; joined to the staging directory they would lead elsewhere.
bool isNoFileName(const QString &name)
{
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..");
}

bool setMode(const QString &path, mode_t mode)
{
    return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

bool setOwner(const QString &path, uid_t user, gid_t group)
{
    return ::chown(QFile::encodeName(path).constData(), user, group) == 0;
}

} // namespace

PackageStaging::PackageStaging(const QString &directory)
    : m_directory(directory)
{
}

void PackageStaging::prepare() const
{
    if (!QFileInfo::exists(m_directory) && !QDir().mkpath(m_directory))
        qCWarning(daemonLog) << "Cannot create incoming apk directory:" << m_directory;
    if (!setOwner(m_directory, rootUser, rootGroup))
        qCWarning(daemonLog) << "Cannot set ownership of directory:" << m_directory;
    if (!setMode(m_directory, directoryMode))
        qCWarning(daemonLog) << "Cannot set permission of directory:" << m_directory;
}

void PackageStaging::removeLeftovers() const
{
    const QFileInfoList files =
        QDir(m_directory).entryInfoList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    for (const QFileInfo &file : files) {
        qCDebug(daemonLog) << "Removing old incoming file:" << file.filePath();
        if (!QFile::remove(file.filePath()))
            qCWarning(daemonLog) << "Could not remove file::" << file.filePath();
    }
}

QString PackageStaging::stage(const QString &source) const
{
    const QString name = fileName(source);
    QString staged = m_directory + name;
    const QString temporary = staged + QStringLiteral(".tmp");
    const bool mayBeStaged = !isNoFileName(name);

    if (mayBeStaged && isInTheWay(staged)) {
        qCWarning(daemonLog) << "File already exists in incoming folder:" << staged;
        QFile::remove(staged);
    }
    if (mayBeStaged && isInTheWay(temporary)) {
        qCWarning(daemonLog) << "Tmp file already exists in incoming folder:" << temporary;
        QFile::remove(temporary);
    }
    if (!mayBeStaged || !copyRegularFile(source, temporary)) {
        if (mayBeStaged)
            QFile::remove(temporary);
        qCCritical(daemonLog) << "Could not copy incoming file:" << source << "->" << temporary;
        return QString();
    }
    if (std::rename(QFile::encodeName(temporary).constData(),
                    QFile::encodeName(staged).constData()) != 0) {
        QFile::remove(staged);
        qCCritical(daemonLog) << "Could not rename file:" << temporary << "->" << staged;
        return QString();
    }
    if (!setMode(staged, fileMode)) {
        const QString reason = qt_error_string(errno);
        qCCritical(daemonLog) << "Cannot change permissions:" << staged << "(" << reason << ")";
        return QString();
    }
    if (!setOwner(staged, rootUser, rootGroup)) {
        const QString reason = qt_error_string(errno);
        qCCritical(daemonLog) << "Cannot change ownership:" << staged << "(" << reason << ")";
        return QString();
    }
    return staged;
}
