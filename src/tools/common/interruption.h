#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Takes the request to end, by Ctrl-C or from a service manager, from the system, so that a
/// program that is meant to run until then can end in order. Make it while the program has no
/// threads yet: those of Qt D-Bus come with the first connection, and would be ended by the signal.
class Interruption : public QObject
{
    Q_OBJECT

public:
    explicit Interruption(QObject *parent = nullptr);
    ~Interruption() override;

Q_SIGNALS:
    /// From the event loop, as often as it is asked for.
    void requested();

private:
    void onSignal();

    int m_descriptor; ///< of the kernel's signalfd(2)
    QSocketNotifier m_notifier;
};
