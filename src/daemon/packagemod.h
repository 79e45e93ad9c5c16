#pragma once

#include <QDebug>
#include <QString>

/// Where a request to install an app came from.
enum class PackageSource {
    File = 0,         ///< an ordinary file
    Preload = 1,      ///< an app that the device comes with
    PartnerSpace = 2, ///< an app shown in the partner space only
};

/// One request to the runtime's package manager.
struct PackageMod
{
    QString path;         ///< install: the APK file as the runtime sees it; else: the package name
    bool install = false; ///< false to uninstall
    bool silent = false;  ///< without a result, hence without a notice to the user
};

bool operator==(const PackageMod &left, const PackageMod &right);
QDebug operator<<(QDebug debug, const PackageMod &mod);
