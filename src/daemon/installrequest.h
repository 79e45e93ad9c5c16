#pragma once

#include "daemon/packagemod.h"

class DaemonConfig;

/// The request to install what was staged of a file: `staged` is its path on the host. Silent, so
/// that no notice tells the result, unless a user asked for it: not for what the device comes with,
/// nor for the APK of a host package, which is known by where it lies.
PackageMod installRequest(const QString &filename, const QString &staged, PackageSource source,
                          const DaemonConfig &config);
