#pragma once

#include "binder/connection.h"
#include "binder/context.h"
#include "binder/misuselog.h"
#include "binder/uniquefd.h"

#include <memory>
#include <string>
#include <unordered_map>

namespace SimBinder {

/// The router process's loop: accepts the open files of one device, whose node is a Unix stream
/// socket, and serves them one request at a time until SIGTERM or SIGINT. SIGUSR1 has it print what
/// it keeps for each open file.
class Router
{
public:
    Router(const std::string &path, const Quirks &quirks, MisuseLog &misuse);
    ~Router();

    /// False when it cannot listen at the path, with the reason in errno. A socket that a router
    /// left behind is replaced; one that is being listened at is not.
    bool listen();

    /// Serves until a signal comes; what was sent before it is still carried out.
    void run();

private:
    bool watch(int fd, unsigned events, bool isNew) const;
    int processEvents(int timeoutMs);
    void onSignal();
    void tellBooks();
    void accept();
    void process(int socket);
    void showAllReadiness();

    std::string m_path;
    Quirks m_quirks;
    Context m_context;
    UniqueFd m_epoll;
    UniqueFd m_listener;
    UniqueFd m_signals;
    UniqueFd m_spare; // given up to be able to turn a connection away when no other is free
    bool m_isStopping = false;
    unsigned m_booksTold = 0;
    std::unordered_map<int, std::unique_ptr<Connection>> m_connections; // by socket
};

} // namespace SimBinder
