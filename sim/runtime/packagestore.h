#pragma once

#include "runtime/apkfile.h"
#include "runtime/apkinfo.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace SimRuntime {

struct InstalledPackage
{
    ApkInfo info;
    int uid = 0;
};

/// Install flags of the package manager (AOSP, PackageManager.INSTALL_...).
constexpr int InstallReplaceExisting = 0x2;

/// Delete flags (PackageManager.DELETE_...) and results.
constexpr int DeleteKeepData = 0x1;
constexpr int DeleteSucceeded = 1;
constexpr int DeleteFailedInternalError = -1;

/// The bytes that an app takes, as Android counts them: its cache is part of its data.
struct PackageSizes
{
    qint64 code = 0;
    qint64 data = 0;
    qint64 cache = 0;
};

/// The installed apps and their data, kept under the data root across restarts:
/// data/app/PACKAGE.apk, data/data/PACKAGE/ and the uids in data/system/packages.json.
class PackageStore
{
public:
    /// `sdk` decides which apps can run; `storageLimit` is the room for all APKs together, in
    /// bytes (0: as much as the disk has).
    PackageStore(const QString &dataRoot, int sdk, qint64 storageLimit);

    /// Finds what was installed before. What is missing or damaged is left out, with a warning.
    void load();

    /// Installs the APK at a path as seen by the runtime, for which "/" is the data root. On
    /// success `package` is its name; on a failure it is too, if it got that far. Nothing is
    /// changed on failure.
    InstallResult install(const QString &runtimePath, int flags, QString *package);

    /// Returns a delete result.
    int remove(const QString &package, int flags);

    bool clearCache(const QString &package);
    bool clearData(const QString &package);

    bool contains(const QString &package) const { return m_packages.contains(package); }
    InstalledPackage find(const QString &package) const { return m_packages.value(package); }
    QStringList names() const { return m_packages.keys(); }
    PackageSizes sizes(const QString &package) const;

private:
    QString apkPath(const QString &package) const;
    QString dataPath(const QString &package) const;
    QString indexPath() const;
    InstallResult check(const ApkInfo &info, int flags) const;
    InstallResult copy(const QString &source, const QString &target) const;
    bool fits(const QString &package, qint64 size) const;
    bool save() const;
    int nextUid() const;

    QString m_dataRoot;
    int m_sdk;
    qint64 m_storageLimit;
    QMap<QString, InstalledPackage> m_packages;
};

} // namespace SimRuntime
