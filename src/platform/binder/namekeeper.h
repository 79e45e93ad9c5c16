#pragma once

#include "platform/binder/retrytimer.h"
#include "platform/binder/types.h"

#include <QByteArray>

#include <map>
#include <memory>
#include <vector>

namespace Binder {

class Process;
class RemoteObject;

/// Keeps objects of this process registered under their names with whichever service manager is
/// there: the first attempt is made at once; without a service manager it is repeated at the pace
/// of RetryTimer, and when the service manager dies its successor gets the names anew.
class NameKeeper
{
public:
    explicit NameKeeper(Process &process);

    /// Returns the number of the registration. It may or may not have been made by then.
    quint64 keep(const QByteArray &name, quint64 object);
    void release(quint64 registration);

    /// Ends what keeps this object registered.
    void forgetObject(quint64 object);

    /// The device is lost: nothing is registered any more.
    void stop() { m_retry.stop(); }

private:
    struct Registration
    {
        QByteArray name;
        quint64 object = 0;
        bool settled = false; // the present service manager has accepted or refused it
    };

    void attempt();
    bool findManager();
    void onManagerDied();
    bool registerName(quint64 id);
    void letGoWhenUnused();

    Process &m_process;
    RetryTimer m_retry;
    std::map<quint64, Registration> m_registrations;

    // Only while there are registrations: it holds the process to which this belongs.
    std::shared_ptr<RemoteObject> m_manager;
};

} // namespace Binder
