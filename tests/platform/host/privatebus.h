#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// A message bus of the test's own, with no services to activate. Its address stays the same when
/// it is stopped and started again. Ends with the object.
class PrivateBus
{
public:
    /// Whether the bus lets its clients say anything; when it does not, it refuses even the
    /// greeting of a new connection.
    enum class Traffic { Allowed, Refused };

    PrivateBus() = default;
    ~PrivateBus();

    /// Waits until it accepts connections; false when it could not be started.
    bool start(Traffic traffic = Traffic::Allowed);
    void stop();

    QString address() const;

private:
    QTemporaryDir m_directory;
    QProcess m_daemon;
};
