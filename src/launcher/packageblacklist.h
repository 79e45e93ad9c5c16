#pragma once

#include <QString>
#include <QStringList>

/// Packages that stay off the host: their launchers are hidden, their handlers not registered.
class PackageBlacklist
{
public:
    /// Reads "/etc/bramd/app-blacklist" and then the file that the environment variable
    /// "BRAMD_PACKAGE_BLACKLIST_PATH" names (UTF-8), one package name per line; white space
    /// around it is ignored. Files that cannot be read are skipped silently.
    PackageBlacklist();

    bool contains(const QString &packageName) const;

private:
    QStringList m_packages;
};
