#pragma once

#include "runtime/apkinfo.h"

#include <QString>

namespace SimRuntime {

/// Result codes of the package manager (AOSP frameworks/base, android.content.pm.PackageManager).
enum InstallResult : int {
    InstallSucceeded = 1,
    InstallFailedAlreadyExists = -1,
    InstallFailedInvalidApk = -2,
    InstallFailedInvalidUri = -3,
    InstallFailedInsufficientStorage = -4,
    InstallFailedOlderSdk = -12,
    InstallFailedConflictingProvider = -13,
    InstallFailedVersionDowngrade = -25,
    InstallParseFailedBadManifest = -101,
    InstallParseFailedUnexpectedException = -102,
    InstallParseFailedBadPackageName = -106,
    InstallFailedInternalError = -110
};

struct ApkReading
{
    InstallResult result = InstallSucceeded;
    ApkInfo info; ///< empty on failure
};

/// Reads an APK with the programs `aapt` and `unzip`; blocks while they run (milliseconds for
/// most APKs).
ApkReading readApk(const QString &path);

} // namespace SimRuntime
