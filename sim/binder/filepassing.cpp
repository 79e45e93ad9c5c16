#include "binder/filepassing.h"

#include "binder/protocol.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace SimBinder {

namespace {

constexpr std::size_t ControlSize = CMSG_SPACE(MaxFiles * sizeof(int));

} // namespace

ssize_t sendWithFiles(int socket, const void *bytes, std::size_t size,
                      const std::vector<int> &files)
{
    iovec vector = {const_cast<void *>(bytes), size};
    msghdr message = {};
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[ControlSize] = {};
    if (!files.empty()) {
        const std::size_t filesSize = files.size() * sizeof(int);
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(filesSize);
        cmsghdr *header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(filesSize);
        std::memcpy(CMSG_DATA(header), files.data(), filesSize);
    }
    ssize_t sent = 0;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent;
}

ssize_t receiveWithFiles(int socket, void *bytes, std::size_t size, std::vector<UniqueFd> *files)
{
    iovec vector = {bytes, size};
    msghdr message = {};
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[ControlSize] = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t received = 0;
    do {
        received = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (received < 0 && errno == EINTR);
    if (received < 0)
        return received;
    for (cmsghdr *header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int file = -1;
            std::memcpy(&file, CMSG_DATA(header) + i * sizeof file, sizeof file);
            files->emplace_back(file);
        }
    }
    return received;
}

} // namespace SimBinder
