#include "runtime/packagestore.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStorageInfo>

#include <algorithm>

Q_LOGGING_CATEGORY(lcPackages, "sim.runtime.packages")

namespace SimRuntime {

namespace {

constexpr int FirstAppUid = 10000; // android.os.Process.FIRST_APPLICATION_UID
constexpr int CopyBlock = 1024 * 1024;

qint64 treeSize(const QString &path)
{
    qint64 size = 0;
    QDirIterator files(path, QDir::Files | QDir::Hidden | QDir::System,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        size += files.fileInfo().size();
    }
    return size;
}

// Links are removed, never followed: apps can put any into their directories.
bool removeTree(const QString &path)
{
    const QFileInfo info(path);
    if (info.isSymLink() || !info.isDir())
        return !info.exists() || QFile::remove(path);
    return QDir(path).removeRecursively();
}

bool emptyDirectory(const QString &path)
{
    bool ok = true;
    const auto entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                                  QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries)
        ok = removeTree(entry.filePath()) && ok;
    return ok;
}

} // namespace

PackageStore::PackageStore(const QString &dataRoot, int sdk, qint64 storageLimit)
    : m_dataRoot(dataRoot)
    , m_sdk(sdk)
    , m_storageLimit(storageLimit)
{
}

QString PackageStore::apkPath(const QString &package) const
{
    return m_dataRoot + QStringLiteral("/data/app/") + package + QStringLiteral(".apk");
}

QString PackageStore::dataPath(const QString &package) const
{
    return m_dataRoot + QStringLiteral("/data/data/") + package;
}

QString PackageStore::indexPath() const
{
    return m_dataRoot + QStringLiteral("/data/system/packages.json");
}

void PackageStore::load()
{
    m_packages.clear();
    QFile index(indexPath());
    if (!index.open(QIODevice::ReadOnly))
        return;
    const QJsonObject packages = QJsonDocument::fromJson(index.readAll()).object();
    for (auto it = packages.begin(); it != packages.end(); ++it) {
        const ApkReading reading = readApk(apkPath(it.key()));
        if (reading.result != InstallSucceeded || reading.info.package != it.key()) {
            qCWarning(lcPackages) << "Lost:" << it.key() << "because its APK is gone or damaged";
            continue;
        }
        m_packages.insert(
            it.key(),
            {reading.info, it.value().toObject().value(QStringLiteral("uid")).toInt(FirstAppUid)});
    }
}

bool PackageStore::save() const
{
    QJsonObject packages;
    for (auto it = m_packages.begin(); it != m_packages.end(); ++it) {
        packages.insert(it.key(),
                        QJsonObject{{QStringLiteral("uid"), it->uid},
                                    {QStringLiteral("versionCode"), it->info.versionCode}});
    }
    QDir().mkpath(QFileInfo(indexPath()).path());
    QSaveFile index(indexPath());
    if (index.open(QIODevice::WriteOnly)) {
        index.write(QJsonDocument(packages).toJson());
        if (index.commit())
            return true;
    }
    qCCritical(lcPackages) << "Cannot write" << indexPath() << index.errorString();
    return false;
}

int PackageStore::nextUid() const
{
    int uid = FirstAppUid;
    for (const InstalledPackage &package : m_packages)
        uid = std::max(uid, package.uid + 1);
    return uid;
}

InstallResult PackageStore::check(const ApkInfo &info, int flags) const
{
    if (info.minimumSdk > m_sdk)
        return InstallFailedOlderSdk;
    if (m_packages.contains(info.package)) {
        if ((flags & InstallReplaceExisting) == 0)
            return InstallFailedAlreadyExists;
        if (info.versionCode < m_packages.value(info.package).info.versionCode)
            return InstallFailedVersionDowngrade;
    }
    for (const InstalledPackage &other : m_packages) {
        if (other.info.package == info.package)
            continue;
        for (const QString &authority : info.authorities) {
            if (other.info.authorities.contains(authority))
                return InstallFailedConflictingProvider;
        }
    }
    return InstallSucceeded;
}

bool PackageStore::fits(const QString &package, qint64 size) const
{
    if (m_storageLimit == 0)
        return true;
    qint64 taken = size;
    for (auto it = m_packages.begin(); it != m_packages.end(); ++it) {
        if (it.key() != package)
            taken += QFileInfo(apkPath(it.key())).size();
    }
    return taken <= m_storageLimit;
}

InstallResult PackageStore::copy(const QString &source, const QString &target) const
{
    QFile from(source);
    QSaveFile to(target);
    QDir().mkpath(QFileInfo(target).path());
    bool ok = from.open(QIODevice::ReadOnly) && to.open(QIODevice::WriteOnly);
    while (ok && !from.atEnd()) {
        const QByteArray block = from.read(CopyBlock);
        ok = from.error() == QFile::NoError && to.write(block) == block.size();
    }
    if (ok && to.commit())
        return InstallSucceeded;
    const bool full = QStorageInfo(QFileInfo(target).path()).bytesAvailable() < from.size();
    return full ? InstallFailedInsufficientStorage : InstallFailedInternalError;
}

InstallResult PackageStore::install(const QString &runtimePath, int flags, QString *package)
{
    const QString source = m_dataRoot + runtimePath;
    if (!QFileInfo(source).isFile())
        return InstallFailedInvalidUri;
    const ApkReading reading = readApk(source);
    *package = reading.info.package;
    if (reading.result != InstallSucceeded)
        return reading.result;
    const InstallResult checked = check(reading.info, flags);
    if (checked != InstallSucceeded)
        return checked;
    if (!fits(*package, QFileInfo(source).size()))
        return InstallFailedInsufficientStorage;
    const InstallResult copied = copy(source, apkPath(*package));
    if (copied != InstallSucceeded)
        return copied;

    InstalledPackage installed;
    installed.info = reading.info;
    installed.uid = contains(*package) ? m_packages.value(*package).uid : nextUid();
    m_packages.insert(*package, installed);
    QDir().mkpath(dataPath(*package));
    return save() ? InstallSucceeded : InstallFailedInternalError;
}

int PackageStore::remove(const QString &package, int flags)
{
    if (!contains(package))
        return DeleteFailedInternalError;
    m_packages.remove(package);
    bool ok = save() && removeTree(apkPath(package));
    if ((flags & DeleteKeepData) == 0)
        ok = removeTree(dataPath(package)) && ok;
    return ok ? DeleteSucceeded : DeleteFailedInternalError;
}

bool PackageStore::clearCache(const QString &package)
{
    if (!contains(package))
        return false;
    const bool cache = removeTree(dataPath(package) + QStringLiteral("/cache"));
    return removeTree(dataPath(package) + QStringLiteral("/code_cache")) && cache;
}

bool PackageStore::clearData(const QString &package)
{
    return contains(package) && emptyDirectory(dataPath(package));
}

PackageSizes PackageStore::sizes(const QString &package) const
{
    PackageSizes sizes;
    sizes.code = QFileInfo(apkPath(package)).size();
    sizes.data = treeSize(dataPath(package));
    sizes.cache = treeSize(dataPath(package) + QStringLiteral("/cache")) +
                  treeSize(dataPath(package) + QStringLiteral("/code_cache"));
    return sizes;
}

} // namespace SimRuntime
