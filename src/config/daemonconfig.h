#pragma once

#include <QString>
#include <QUrl>

/// Where the Android runtime keeps its files on the host, how it sees the host's files, and which
/// Android release its image carries. For use on the main thread.
class DaemonConfig
{
public:
    /// The runtime's directories on the host, below the data root. All paths but DataRoot end
    /// in "/".
    enum SymbolicPath : int {
        DataRoot = 1,           ///< the data root itself
        AppsDir = 2,            ///< APK files of the installed apps
        StagingIncomingDir = 3, ///< APK files on their way to the runtime's package manager
        StagingPackagedDir = 4, ///< APK files that RPM packages bring
        AppDataDir = 5,         ///< the apps' private data
    };

    /// Reads the data root, once: the value of the environment variable "ANDROID_DATA_ROOT"
    /// (UTF-8) when it is set, even to nothing, else "/home/.android".
    DaemonConfig();

    /// A null string, with a warning, for a number that is no SymbolicPath.
    QString path(SymbolicPath symbolicPath) const;

    /// The path under which the runtime sees a host file; see PathMapping::toAndroidPath().
    static QString toAndroidPath(const QString &hostPath);

    /// The same as a URL; see PathMapping::toAndroidUrl().
    static QUrl toAndroidUrl(const QString &hostPath);

    /// What the runtime image says about its Android: SDK level (0: not known), release and date
    /// of the security patches (empty: not known). The values are kept for the life of the
    /// process. A value not known yet is looked for again at every call, because the runtime may
    /// be installed while the daemon runs; a critical line tells when the level is not found.
    static int androidSdkVersion();
    static QString androidRelease();
    static QString androidSecurityPatch();

private:
    QString m_dataRoot;
};
