#pragma once

#include "platform/binder/types.h"

#include <QByteArray>

#include <memory>

namespace Binder {

class OutgoingData;
class Process;
class RemoteObject;

/// The calls that Android's service manager serves. It is reached under handle 0, whichever
/// process is the context manager at the moment (AOSP frameworks/native,
/// cmds/servicemanager/service_manager.c and libs/binder/IServiceManager.cpp, releases 8.1 to 10).
namespace ContextManager {

/// Whether there is one, with StatusDeadObject if not.
Status ping(Process &process);

/// `object` is set, to null when the name is not registered, if the result is StatusOk.
Status checkService(Process &process, const QByteArray &name,
                    std::shared_ptr<RemoteObject> *object);

/// Registers the object of this process that has this number. A negative status of the service
/// manager's own is a refusal.
Status addService(Process &process, const QByteArray &name, quint64 object);

} // namespace ContextManager
} // namespace Binder
