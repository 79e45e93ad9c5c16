#pragma once

#include <functional>
#include <sys/types.h>

/// Users other than root, for tests of what these may do.
namespace OtherUsers {

/// Whether there are any. In a namespace of an ordinary user's making, root is the only one.
bool exist();

/// A process that does something, such as becoming another user, and then waits. It ends with the
/// object.
class WaitingProcess
{
public:
    /// Returns when `prepare` has; the test program ends when that fails.
    explicit WaitingProcess(const std::function<bool()> &prepare);
    WaitingProcess(const WaitingProcess &) = delete;
    WaitingProcess &operator=(const WaitingProcess &) = delete;
    ~WaitingProcess();

    pid_t id() const { return m_id; }

private:
    pid_t m_id;
};

} // namespace OtherUsers
