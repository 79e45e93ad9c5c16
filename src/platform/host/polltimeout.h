#pragma once

#include <QtGlobal>

#include <limits>

/// A point in time that never comes, in libsystemd's counting.
constexpr quint64 NoTimeoutUs = std::numeric_limits<quint64>::max();

/// How long poll(2) may wait for a time-out of libsystemd: milliseconds, rounded down, -1 for no
/// limit, 0 for a time-out that has passed. Both times are in microseconds of the monotonic clock.
int pollTimeoutMs(quint64 timeoutUs, quint64 nowUs);

/// The monotonic clock, in microseconds.
quint64 monotonicTimeUs();
