#pragma once

#include "daemon/userrights.h"

#include <optional>

struct BusCredentials;
class DevicePolicy;
struct ProcessOwner;
class QDBusContext;

/// Whether a process is privileged, that is may install and remove apps whatever the device policy
/// says: its group is "privileged" or "disk", or its owner is "root".
///
/// The process must be the one that made the connection to the bus. By the time of the look it may
/// have ended and its number belong to another one; or it may have started a program that the file
/// system gives another user or group, and left its connection to it. Then the bus contradicts: it
/// knows another user, or does not know the group among the connection's. A program that had its
/// user or group from the start, and so when it connected, is what its file's owner wants it to be.
bool isPrivileged(const ProcessOwner &process, const BusCredentials &connection);

/// With whose rights files are read for a caller that is not privileged: with those that its
/// connection was made with. Of a connection that is gone nothing is known; and one of root's whose
/// process is not root's any more was left over by somebody who has given up root's rights. These
/// get what everybody may read.
UserRights rightsOf(const BusCredentials &connection);

/// What a call may do.
struct CallerVerdict
{
    bool passes = false;             ///< whether apps may be installed and removed
    std::optional<UserRights> reads; ///< with whose rights files are read; none: the daemon's own
};

/// Who may have apps installed and removed: the daemon itself, privileged processes, and everyone
/// else as far as the device policy lets them.
class CallerCheck
{
public:
    /// `policy` is not owned. It is asked only about callers that are not privileged.
    explicit CallerCheck(DevicePolicy *policy);

    /// About the call that `context` is serving; one that did not come over D-Bus passes. Blocks
    /// while the bus is asked for the caller.
    CallerVerdict verdict(const QDBusContext &context) const;

    /// The same about a connection that the bus has told about.
    CallerVerdict verdict(const BusCredentials &connection) const;

private:
    DevicePolicy *m_policy;
};
