#pragma once

#include "runtime/callbacks.h"
#include "runtime/packagestore.h"

#include <QObject>
#include <QString>

#include <memory>

namespace SimRuntime {

/// Installs and removes packages after the call that asked for it has been answered, and then
/// tells the caller's observer, as Android does.
class PackageInstaller : public QObject
{
    Q_OBJECT

public:
    PackageInstaller(PackageStore *store, Callbacks *callbacks, QObject *parent = nullptr);

    void install(const QString &path, int flags, std::shared_ptr<RemoteObject> observer);
    void remove(const QString &package, int flags, std::shared_ptr<RemoteObject> observer);

Q_SIGNALS:
    void installed(const QString &package);
    void removed(const QString &package);

private:
    PackageStore *m_store;
    Callbacks *m_callbacks;
};

} // namespace SimRuntime
