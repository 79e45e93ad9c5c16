#include "daemon/packagestaging.h"

#include "daemon/filecopy.h"
#include "daemon/packageform.h"
#include "daemon/runtimedirectory.h"
#include "daemon/sourcefile.h"
#include "platform/host/logging.h"

#include <QFile>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t rootUser = 0;
constexpr gid_t rootGroup = 0;
constexpr mode_t directoryMode = 0755;
constexpr mode_t fileMode = 0644;

const QString temporarySuffix = QStringLiteral(".tmp");

/// Whether a file may be staged under this name. Two names stand for a directory; joined to the
/// staging directory they would lead elsewhere. And an "a.apk.tmp" that was accepted would have to
/// make way for the temporary copy of an "a.apk" that comes later. (A name that leaves no room for
/// the suffix in the 255 bytes that file systems allow cannot be copied, and that is said then.)
bool canBeStaged(const QString &name)
{
    return name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.endsWith(temporarySuffix);
}

FileDescriptor openSource(const QString &path, const std::optional<UserRights> &rights)
{
    return rights ? SourceFile::open(path, *rights) : SourceFile::open(path);
}

/// Returns the copy. On failure it is not open, and nothing is left of it.
FileDescriptor copy(const FileDescriptor &source, const RuntimeDirectory &directory,
                    const QByteArray &name)
{
    FileDescriptor target = source.isOpen() ? directory.create(name) : FileDescriptor();
    if (target.isOpen() && copyContent(source, target))
        return target;
    directory.remove(name);
    return FileDescriptor();
}

} // namespace

PackageStaging::PackageStaging(const QString &root, const QString &directory)
    : m_root(root)
    , m_directory(directory)
{
}

void PackageStaging::prepare() const
{
    const RuntimeDirectory directory = RuntimeDirectory::make(m_root, m_directory);
    if (!directory.isOpen())
        qCWarning(daemonLog) << "Cannot create incoming apk directory:" << m_directory;
    if (!directory.setOwner(rootUser, rootGroup))
        qCWarning(daemonLog) << "Cannot set ownership of directory:" << m_directory;
    if (!directory.setMode(directoryMode))
        qCWarning(daemonLog) << "Cannot set permission of directory:" << m_directory;
}

void PackageStaging::removeLeftovers() const
{
    const RuntimeDirectory directory = RuntimeDirectory::open(m_root, m_directory);
    const QVector<QByteArray> names = directory.files();
    for (const QByteArray &name : names) {
        const QString path = m_directory + QFile::decodeName(name);
        qCDebug(daemonLog) << "Removing old incoming file:" << path;
        if (!directory.remove(name))
            qCWarning(daemonLog) << "Could not remove file::" << path;
    }
}

QString PackageStaging::stage(const QString &source, const std::optional<UserRights> &rights) const
{
    const QString name = fileName(source);
    QString staged = m_directory + name;
    const QString temporary = staged + temporarySuffix;
    const QByteArray stagedName = QFile::encodeName(name);
    const QByteArray temporaryName = QFile::encodeName(name + temporarySuffix);
    const RuntimeDirectory directory = RuntimeDirectory::open(m_root, m_directory);
    const bool stageable = canBeStaged(name);

    if (stageable && directory.contains(stagedName)) {
        qCWarning(daemonLog) << "File already exists in incoming folder:" << staged;
        directory.remove(stagedName);
    }
    if (stageable && directory.contains(temporaryName)) {
        qCWarning(daemonLog) << "Tmp file already exists in incoming folder:" << temporary;
        directory.remove(temporaryName);
    }
    const FileDescriptor file =
        stageable ? copy(openSource(source, rights), directory, temporaryName) : FileDescriptor();
    if (!file.isOpen()) {
        qCCritical(daemonLog) << "Could not copy incoming file:" << source << "->" << temporary;
        return QString();
    }
    if (!directory.rename(temporaryName, stagedName)) {
        directory.remove(stagedName);
        directory.remove(temporaryName);
        qCCritical(daemonLog) << "Could not rename file:" << temporary << "->" << staged;
        return QString();
    }
    if (::fchmod(file.get(), fileMode) != 0) {
        const QString reason = qt_error_string(errno);
        qCCritical(daemonLog) << "Cannot change permissions:" << staged << "(" << reason << ")";
        return QString();
    }
    if (::fchown(file.get(), rootUser, rootGroup) != 0) {
        const QString reason = qt_error_string(errno);
        qCCritical(daemonLog) << "Cannot change ownership:" << staged << "(" << reason << ")";
        return QString();
    }
    return staged;
}
