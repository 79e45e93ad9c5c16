#include "tools/common/interruption.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t requestsToEnd()
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    sigaddset(&signalSet, SIGINT);
    sigaddset(&signalSet, SIGTERM);
    return signalSet;
}

/// Signals arrive at the descriptor only when nobody else takes them.
int openDescriptor()
{
    const sigset_t signalSet = requestsToEnd();
    pthread_sigmask(SIG_BLOCK, &signalSet, nullptr);
    return signalfd(-1, &signalSet, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

Interruption::Interruption(QObject *parent)
    : QObject(parent)
    , m_descriptor(openDescriptor())
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &Interruption::onSignal);
}

Interruption::~Interruption()
{
    m_notifier.setEnabled(false);
    close(m_descriptor);
    const sigset_t signalSet = requestsToEnd();
    pthread_sigmask(SIG_UNBLOCK, &signalSet, nullptr);
}

void Interruption::onSignal()
{
    signalfd_siginfo information;
    if (read(m_descriptor, &information, sizeof(information)) == sizeof(information))
        Q_EMIT requested();
}
