#pragma once

#include <QtGlobal>

#include <optional>
#include <sys/types.h>

/// What is needed of sd-login and the system to wait for a user, see sd_login_monitor_new(3).
/// Destruction releases the monitor.
class LoginMonitor
{
public:
    virtual ~LoginMonitor() = default;
    LoginMonitor(const LoginMonitor &) = delete;
    LoginMonitor &operator=(const LoginMonitor &) = delete;

    /// Starts to watch the seats; false on failure. Called once, before all others.
    virtual bool open() = 0;

    /// The descriptor to poll, owned by the monitor; negative on failure.
    virtual int descriptor() const = 0;

    /// The poll(2) events to wait for; negative on failure.
    virtual int events() const = 0;

    /// When to look again at the latest, in microseconds of the monotonic clock; NoTimeoutUs when
    /// only the descriptor tells.
    virtual quint64 timeout() const = 0;

    /// Takes note of the changes seen, so that the descriptor is no longer readable.
    virtual void flush() = 0;

    /// The user of the active session on "seat0", if there is one.
    virtual std::optional<uid_t> activeUser() const = 0;

    /// poll(2) of one descriptor, limited to `timeoutMs` milliseconds, -1 for no limit. Blocks.
    virtual int poll(int descriptor, short events, int timeoutMs) = 0;

    /// The monotonic clock, in microseconds.
    virtual quint64 now() const = 0;

protected:
    LoginMonitor() = default;
};
