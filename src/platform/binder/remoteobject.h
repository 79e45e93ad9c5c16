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

    /// The driver has refused to send a call: the object's process was gone before, or the device
    /// is lost. A call that was not answered because the process died meanwhile is no such call,
    /// and death handlers run later.
    bool isKnownDead() const { return m_knownDead; }
    void onRefused() { m_knownDead = true; } ///< for Process

    Handle handle() const { return m_handle; }
    const std::shared_ptr<Process> &process() const { return m_process; }

private:
    std::shared_ptr<Process> m_process;
    Handle m_handle;
    bool m_knownDead = false;
};

} // namespace Binder
