#pragma once

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"

/// Has the daemon install APK files that somebody opened on a desktop, where nobody sees what a
/// program prints. Between the double click and the daemon's notice of the result there may be a
/// minute, when the runtime has to start: a notice says that something happens. When the daemon
/// does not take the file, no result will come, and the notice says so instead.
class ApkOpener
{
public:
    explicit ApkOpener(const QDBusConnection &systemBus = QDBusConnection::systemBus(),
                       const QDBusConnection &sessionBus = QDBusConnection::sessionBus());

    /// `argument` is a path or file URL. Done means that the daemon has taken the file.
    Outcome open(const QString &argument);

private:
    Outcome install(const QString &argument);

    DaemonClient m_daemon;
    RuntimeUnit m_unit;
    QDBusConnection m_sessionBus;
};
