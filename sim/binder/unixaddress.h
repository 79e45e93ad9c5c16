#pragma once

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace SimBinder {

/// The address of a Unix socket at a path.
class UnixAddress
{
public:
    /// False, with errno ENAMETOOLONG, when the path is longer than a socket's may be.
    bool set(const char *path)
    {
        const std::size_t length = std::strlen(path);
        if (length >= sizeof m_address.sun_path) {
            errno = ENAMETOOLONG;
            return false;
        }
        std::memcpy(m_address.sun_path, path, length + 1);
        return true;
    }

    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&m_address); }
    socklen_t size() const { return sizeof m_address; }

private:
    sockaddr_un m_address = {AF_UNIX, {}};
};

} // namespace SimBinder
