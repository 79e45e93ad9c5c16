#pragma once

#include <QtGlobal>

class DevicePolicy;
class QDBusContext;
class QString;

/// Whether a process of this group and owner (names, as its directory below /proc has them) may
/// install and remove apps whatever the device policy says.
bool isPrivileged(const QString &group, const QString &owner);

/// Who may have apps installed and removed: the daemon itself, privileged processes, and everyone
/// else as far as the device policy lets them.
class CallerCheck
{
public:
    /// `policy` is not owned. It is asked only about callers that are not privileged.
    explicit CallerCheck(DevicePolicy *policy);

    /// Whether the call that `context` is serving passes; one that did not come over D-Bus does.
    /// Blocks while the bus is asked for the caller.
    bool passes(const QDBusContext &context) const;

    /// The same for a process id; 0 for a process that is not known.
    bool processPasses(uint processId) const;

private:
    DevicePolicy *m_policy;
};
