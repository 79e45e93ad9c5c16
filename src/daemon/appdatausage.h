#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The size in what `du -b` printed: the number before the first tab; 0 when that is no number,
/// none when there is no tab.
std::optional<quint64> sizeFromDu(const QByteArray &output);

constexpr int DuTimeoutMs = 30000;

/// The disk use, in bytes, of a directory on its own file system, as "/usr/bin/du" counts it.
/// Blocks for no longer than the time-out; 0, with one warning, when it cannot be told.
quint64 appDataUsage(const QString &directory, int timeoutMs = DuTimeoutMs);
