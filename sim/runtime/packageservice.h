#pragma once

#include "runtime/callbacks.h"
#include "runtime/packageinstaller.h"
#include "runtime/packagestore.h"
#include "runtime/service.h"

namespace SimRuntime {

/// "package": Android's package manager (IPackageManager.aidl).
class PackageService : public Service
{
public:
    PackageService(const ServiceEnvironment &environment, PackageStore *store,
                   PackageInstaller *installer, Callbacks *callbacks);

private:
    Answer install(const Request &request);
    Answer remove(const Request &request);
    Answer clear(const Request &request, bool (PackageStore::*what)(const QString &));
    Answer uid(const Request &request) const;

    PackageStore *m_store;
    PackageInstaller *m_installer;
    Callbacks *m_callbacks;
};

} // namespace SimRuntime
