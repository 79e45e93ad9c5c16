#pragma once

#include <QSocketNotifier>

#include <memory>

/// Ends the event loop when the process is asked to end (SIGTERM, SIGINT), so that the daemon's
/// objects are destroyed in order. One object per process; the signals have their default effect
/// again once it is destroyed.
///
/// The signal handler writes to an eventfd that the event loop watches. A signalfd would do without
/// a handler, but needs the signals blocked, and a blocked signal stays blocked in every program
/// that the daemon starts.
class TerminationSignals
{
public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};
