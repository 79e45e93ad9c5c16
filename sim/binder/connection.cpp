#include "binder/connection.h"

#include "binder/filepassing.h"

#include <cerrno>
#include <cstring>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <utility>

namespace SimBinder {

namespace {

// How much is read at once; a longer frame comes in several pieces.
constexpr std::size_t PieceSize = 65536;

} // namespace

std::unique_ptr<Connection> Connection::create(UniqueFd socket, Context &context,
                                               const Quirks &quirks,
                                               std::function<void()> showAllReadiness)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return nullptr;
    UniqueFd readiness(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!readiness.isValid())
        return nullptr;
    return std::unique_ptr<Connection>(new Connection(std::move(socket), std::move(readiness),
                                                      context, quirks, peer.pid, peer.uid,
                                                      std::move(showAllReadiness)));
}

Connection::Connection(UniqueFd socket, UniqueFd readiness, Context &context, const Quirks &quirks,
                       pid_t pid, uid_t euid, std::function<void()> showAllReadiness)
    : m_socket(std::move(socket))
    , m_readiness(std::move(readiness))
    , m_handler(context, quirks, pid, euid, m_readiness.get())
    , m_showAllReadiness(std::move(showAllReadiness))
{
}

bool Connection::process()
{
    return (isSending() ? send() : receive()) && answerRequests();
}

void Connection::showReadiness()
{
    const bool readable = m_handler.hasWork();
    if (readable == m_isReadable)
        return;
    m_isReadable = readable;
    std::uint64_t count = 1;
    // Neither can fail on an eventfd that only this process writes and reads in turn; if the
    // driver's side has meddled with it, only that side is misled.
    if (readable)
        (void)!::write(m_readiness.get(), &count, sizeof count);
    else
        (void)!::read(m_readiness.get(), &count, sizeof count);
}

bool Connection::receive()
{
    const std::size_t used = m_input.size();
    m_input.resize(used + PieceSize);
    const ssize_t received =
        receiveWithFiles(m_socket.get(), m_input.data() + used, PieceSize, &m_inputFiles);
    m_input.resize(used + (received > 0 ? static_cast<std::size_t>(received) : 0));
    if (received < 0)
        return errno == EAGAIN;
    if (m_inputFiles.size() > MaxFiles) {
        m_handler.note("a request with more files than one can have");
        return false;
    }
    return received > 0;
}

bool Connection::answerRequests()
{
    RequestHeader header;
    while (!isSending() && m_input.size() >= sizeof header) {
        std::memcpy(&header, m_input.data(), sizeof header);
        if (header.size < sizeof header || header.size > MaxFrameSize) {
            m_handler.note("a request of impossible size");
            return false;
        }
        if (m_input.size() < header.size)
            break;
        const auto begin = m_input.begin();
        Request request;
        request.operation = header.operation;
        request.body.assign(begin + sizeof header, begin + header.size);
        request.files = std::move(m_inputFiles);
        m_inputFiles.clear();
        m_input.erase(begin, begin + header.size);

        std::optional<Answer> answer = m_handler.handle(std::move(request));
        if (!answer)
            return false;
        AnswerHeader answerHeader;
        answerHeader.size = static_cast<std::uint32_t>(sizeof answerHeader + answer->body.size());
        answerHeader.result = answer->result;
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(&answerHeader);
        m_output.assign(bytes, bytes + sizeof answerHeader);
        m_output.insert(m_output.end(), answer->body.begin(), answer->body.end());
        m_sent = 0;
        m_outputFiles = std::move(answer->files);
        m_lentFile = answer->lentFile;
        // As in the kernel, everybody to whom this request gave work is woken before its sender
        // goes on.
        m_showAllReadiness();
        if (!send())
            return false;
    }
    return true;
}

bool Connection::send()
{
    while (isSending()) {
        std::vector<int> files;
        if (m_sent == 0) {
            for (const UniqueFd &file : m_outputFiles)
                files.push_back(file.get());
            if (m_lentFile >= 0)
                files.push_back(m_lentFile);
        }
        const ssize_t sent = sendWithFiles(m_socket.get(), m_output.data() + m_sent,
                                           m_output.size() - m_sent, files);
        if (sent < 0)
            return errno == EAGAIN;
        m_sent += static_cast<std::size_t>(sent);
        m_outputFiles.clear();
        m_lentFile = -1;
    }
    return true;
}

} // namespace SimBinder
