#pragma once

#include <QVector>

#include <functional>
#include <optional>

/// Interferes with system calls, as an unusual kernel or file system, or another process at just
/// the wrong moment, would.
namespace SystemCalls {

/// Has these calls of this thread fail with EPERM from now on; with an argument, only those with
/// this first one. There is no way back: for a thread of its own. False when the kernel does not
/// let it.
bool refuse(const QVector<unsigned> &calls, std::optional<unsigned> firstArgument = std::nullopt);

/// Runs `work` in a thread of its own, and `meanwhile` in this one while the first such call of
/// that thread is held. False when no call was made.
bool hold(unsigned call, const std::function<void()> &work, const std::function<void()> &meanwhile);

/// Runs `work` in a thread of its own, whose first such calls are not carried out, but fail with
/// these errors, or return 0 where the error is 0. False when it made fewer calls. With a third
/// argument only those with that one count: sanitizers make write() calls of their own.
bool fail(unsigned call, QVector<int> errors, const std::function<void()> &work,
          std::optional<unsigned> thirdArgument = std::nullopt);

} // namespace SystemCalls
