#pragma once

#include "platform/binder/types.h"

#include <functional>
#include <memory>

namespace Binder {

class Process;

/// A binder object of another process. Holding the shared pointer is holding a reference; there
/// is one RemoteObject per handle and open file, so pointers can be compared.
class RemoteObject
{
public:
    RemoteObject(std::shared_ptr<Process> process, Handle handle);
    ~RemoteObject();
    RemoteObject(const RemoteObject &) = delete;
    RemoteObject &operator=(const RemoteObject &) = delete;

    /// `handler` runs once, from the event loop and never inside a call, when the object's
    /// process is gone; soon after this call if it is gone already. It may release everything,
    /// this object included.
    HandlerId addDeathHandler(std::function<void()> handler);

    /// Afterwards the handler does not run any more. Unknown ids and NoHandler are ignored.
    void removeHandler(HandlerId id);

    Handle handle() const { return m_handle; }
    const std::shared_ptr<Process> &process() const { return m_process; }

private:
    std::shared_ptr<Process> m_process;
    Handle m_handle;
};

} // namespace Binder
