#pragma once

#include "binder/requesthandler.h"
#include "binder/uniquefd.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace SimBinder {

/// One driver's socket: assembles its requests, sends the answers, and keeps the eventfd that it
/// polls readable exactly while work waits. Nothing here blocks; while an answer is not taken, no
/// further request is read.
class Connection
{
public:
    /// Null when the peer cannot be told or no descriptor is free. `showAllReadiness` calls
    /// showReadiness() of every connection.
    static std::unique_ptr<Connection> create(UniqueFd socket, Context &context,
                                              const Quirks &quirks,
                                              std::function<void()> showAllReadiness);

    int socket() const { return m_socket.get(); }

    /// The socket is readable or writable. False when the connection is over.
    bool process();

    /// Whether to wait for the socket to become writable rather than readable.
    bool isSending() const { return m_sent < m_output.size(); }

    Books books() const { return m_handler.books(); }

    /// Work can have come or gone since the last time.
    void showReadiness();

private:
    Connection(UniqueFd socket, UniqueFd readiness, Context &context, const Quirks &quirks,
               pid_t pid, uid_t euid, std::function<void()> showAllReadiness);
    bool receive();
    bool answerRequests();
    bool send();

    UniqueFd m_socket;
    UniqueFd m_readiness;
    bool m_isReadable = false;
    RequestHandler m_handler;
    std::function<void()> m_showAllReadiness;

    std::vector<std::uint8_t> m_input;
    std::vector<UniqueFd> m_inputFiles;

    std::vector<std::uint8_t> m_output;
    std::size_t m_sent = 0;
    std::vector<UniqueFd> m_outputFiles;
    int m_lentFile = -1;
};

} // namespace SimBinder
