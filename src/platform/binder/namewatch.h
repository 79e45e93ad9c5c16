#pragma once

#include "platform/binder/retrytimer.h"
#include "platform/binder/types.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <map>
#include <set>

namespace Binder {

class Process;

/// Asks the service manager for the names that somebody waits for, because the Android releases
/// that we talk to cannot notify of registrations.
///
/// A name is looked up as soon as the event loop runs after a handler came; from then on all names
/// are looked up together, at the pace of RetryTimer, while handlers wait. No name is looked up
/// more than once a second, however often handlers come and go.
class NameWatch
{
public:
    explicit NameWatch(Process &process);

    HandlerId add(const QByteArray &name, std::function<void()> handler);
    void remove(HandlerId id);

    /// The device is lost: nothing is looked up any more.
    void stop();

private:
    struct Handler
    {
        QByteArray name;
        std::function<void()> run;
    };

    void look();
    bool mayBeLookedUp(const QByteArray &name) const;
    std::set<QByteArray> namesToLookUp() const;
    void runHandlers(const QByteArray &name);

    Process &m_process;
    QTimer m_firstLook;
    RetryTimer m_nextRound;
    std::map<HandlerId, Handler> m_handlers;
    std::map<QByteArray, QElapsedTimer> m_lastLooks;
};

} // namespace Binder
