#pragma once

#include "platform/binder/message.h"
#include "platform/binder/types.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace Binder {

class Process;

/// Serves one incoming call of a local object.
///
/// Runs on the event loop's thread, or inside an outgoing synchronous call when the callee calls
/// back. `flags` are the driver's (FlagOneWay, ...). The reply returned is sent when `status`
/// (StatusOk on entry) is left at 0; any other status is sent in its place, and no reply with
/// status 0 is an empty reply. For a one-way call nothing is sent. The function may delete the
/// local object and anything else.
using IncomingCall = std::function<std::unique_ptr<OutgoingReply>(
    IncomingRequest &request, quint32 code, quint32 flags, Status *status)>;

/// A binder object of this process that the runtime can call once it has been handed a reference
/// (Writer::appendLocalObject) or it has been registered by name (ServiceManager).
///
/// The standard transactions (ping, interface, dump, shell command, system properties) are
/// answered by the library. Deleting the object drops it: calls that still arrive for it are
/// answered with StatusDeadObject.
class LocalObject
{
public:
    LocalObject(std::shared_ptr<Process> process, const QByteArray &descriptor, IncomingCall call);
    ~LocalObject();
    LocalObject(const LocalObject &) = delete;
    LocalObject &operator=(const LocalObject &) = delete;

    /// An empty reply to be filled by the function that serves a call of this object.
    std::unique_ptr<OutgoingReply> createReply() const;

    const QByteArray &descriptor() const { return m_descriptor; }

    /// The object's number in the driver, unique for the life of the process.
    quint64 id() const { return m_id; }

private:
    std::shared_ptr<Process> m_process;
    QByteArray m_descriptor;
    quint64 m_id;
};

} // namespace Binder
