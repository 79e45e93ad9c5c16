#include "daemon/terminationsignals.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT};

volatile int eventDescriptor = -1; // a signal handler has nothing but globals

void onSignal(int)
{
    const int interruptedError = errno;
    const quint64 one = 1;
    const ssize_t written = ::write(eventDescriptor, &one, sizeof(one));
    Q_UNUSED(written)
    errno = interruptedError;
}

void setHandler(void (*handler)(int), int flags)
{
    struct sigaction action
    {
    };
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int signal : handledSignals)
        ::sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    eventDescriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (eventDescriptor < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(eventDescriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [] { QCoreApplication::quit(); });
    // Should the event loop be held up, asking a second time has the default effect.
    setHandler(onSignal, SA_RESTART | static_cast<int>(SA_RESETHAND));
}

TerminationSignals::~TerminationSignals()
{
    if (eventDescriptor < 0)
        return;
    setHandler(SIG_DFL, 0);
    m_notifier.reset();
    ::close(eventDescriptor);
    eventDescriptor = -1;
}
