#include "binder/router.h"

#include "binder/unixaddress.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace SimBinder {

namespace {

bool isListenedAt(const UnixAddress &address)
{
    const UniqueFd probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return probe.isValid() && ::connect(probe.get(), address.get(), address.size()) == 0;
}

bool isSocket(const std::string &path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

UniqueFd awaitedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGUSR1);
    if (::sigprocmask(SIG_BLOCK, &signals, nullptr) != 0)
        return UniqueFd();
    return UniqueFd(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

} // namespace

Router::Router(const std::string &path, const Quirks &quirks, MisuseLog &misuse)
    : m_path(path)
    , m_quirks(quirks)
    , m_context(misuse)
{
}

Router::~Router()
{
    m_connections.clear();
    if (m_listener.isValid())
        ::unlink(m_path.c_str());
}

bool Router::listen()
{
    UnixAddress address;
    if (!address.set(m_path.c_str()))
        return false;
    if (isSocket(m_path)) {
        if (isListenedAt(address)) {
            errno = EADDRINUSE;
            return false;
        }
        ::unlink(m_path.c_str());
    }
    m_epoll.reset(::epoll_create1(EPOLL_CLOEXEC));
    m_signals = awaitedSignals();
    m_spare.reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    UniqueFd listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!m_epoll.isValid() || !m_signals.isValid() || !listener.isValid())
        return false;
    // Readable and writable for all, as the device node is.
    const mode_t mask = ::umask(0111);
    const bool isBound = ::bind(listener.get(), address.get(), address.size()) == 0;
    ::umask(mask);
    if (!isBound)
        return false;
    m_listener = std::move(listener);
    return ::listen(m_listener.get(), SOMAXCONN) == 0 && watch(m_listener.get(), EPOLLIN, true) &&
           watch(m_signals.get(), EPOLLIN, true);
}

void Router::run()
{
    while (!m_isStopping)
        processEvents(-1);
    // A driver that has closed its file before the signal has still said what it left behind.
    constexpr int MaxRounds = 1000;
    for (int round = 0; round < MaxRounds && processEvents(0) > 0; ++round) {
    }
}

bool Router::watch(int fd, unsigned events, bool isNew) const
{
    epoll_event event = {};
    event.events = events;
    event.data.fd = fd;
    return ::epoll_ctl(m_epoll.get(), isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, fd, &event) == 0;
}

int Router::processEvents(int timeoutMs)
{
    std::array<epoll_event, 64> events = {};
    const int count =
        ::epoll_wait(m_epoll.get(), events.data(), static_cast<int>(events.size()), timeoutMs);
    for (int i = 0; i < count; ++i) {
        const int fd = events[static_cast<std::size_t>(i)].data.fd;
        if (fd == m_signals.get()) {
            onSignal();
        } else if (fd == m_listener.get()) {
            accept();
        } else {
            process(fd);
        }
    }
    return count;
}

void Router::onSignal()
{
    signalfd_siginfo signal = {};
    if (::read(m_signals.get(), &signal, sizeof signal) != sizeof signal)
        return;
    if (signal.ssi_signo == SIGUSR1) {
        tellBooks();
    } else {
        m_isStopping = true;
        ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, m_signals.get(), nullptr);
    }
}

void Router::tellBooks()
{
    for (const auto &connection : m_connections) {
        const Books books = connection.second->books();
        std::cout << "bramd-sim-binder: pid " << books.pid << ": nodes " << books.nodes
                  << ", references " << books.references << ", deaths " << books.deaths
                  << ", buffers " << books.buffers << '\n';
    }
    std::cout << "bramd-sim-binder: books told: " << ++m_booksTold << std::endl;
}

void Router::accept()
{
    UniqueFd socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.isValid() && (errno == EMFILE || errno == ENFILE)) {
        m_spare.reset();
        socket.reset(::accept(m_listener.get(), nullptr, nullptr));
        socket.reset();
        m_spare.reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    if (!socket.isValid())
        return;
    const int fd = socket.get();
    auto connection =
        Connection::create(std::move(socket), m_context, m_quirks, [this] { showAllReadiness(); });
    if (connection != nullptr && watch(fd, EPOLLIN, true))
        m_connections[fd] = std::move(connection);
}

void Router::process(int socket)
{
    const auto found = m_connections.find(socket);
    if (found == m_connections.end())
        return;
    Connection &connection = *found->second;
    const bool wasSending = connection.isSending();
    if (!connection.process())
        m_connections.erase(found);
    else if (connection.isSending() != wasSending)
        watch(socket, connection.isSending() ? EPOLLOUT : EPOLLIN, false);
    // The end of one program is work for others.
    showAllReadiness();
}

void Router::showAllReadiness()
{
    for (const auto &connection : m_connections)
        connection.second->showReadiness();
}

} // namespace SimBinder
