#pragma once

#include "binder/protocol.h"
#include "binder/uniquefd.h"
#include "platform/binder/driver.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct binder_write_read;

namespace SimBinder {

/// The binder driver of a program of the simulated phone: passes everything on to the router
/// behind the device's path. Without a router there it cannot be opened.
///
/// It differs from the kernel's in what a process cannot do to itself: a command that points to
/// memory which is not there crashes the program instead of failing.
class SocketDriver : public Binder::Driver
{
public:
    /// Null on failure, with the reason in errno (ENOENT, ECONNREFUSED: no router).
    static std::unique_ptr<SocketDriver> connect(const char *path);
    ~SocketDriver() override;

    int control(unsigned long request, void *argument) override;
    const void *map(std::size_t size) override;
    int descriptor() const override { return m_readiness.get(); }

private:
    struct Reply
    {
        std::int32_t result = 0;
        std::vector<std::uint8_t> body;
        std::vector<UniqueFd> files;
    };

    SocketDriver() = default;
    int begin();
    int exchange(Operation operation, const std::vector<std::uint8_t> &body,
                 const std::vector<int> &files, Reply *reply);
    bool send(Operation operation, const std::vector<std::uint8_t> &body,
              const std::vector<int> &files);
    bool receive(Reply *reply);
    int writeRead(binder_write_read *exchange);
    int deliver(Reply *reply, binder_write_read *exchange);
    int fail();

    UniqueFd m_socket;
    UniqueFd m_work;      // readable while work waits
    UniqueFd m_readiness; // readable with m_work, and when the router is gone
    UniqueFd m_memory;
    void *m_mapping = nullptr;
    std::size_t m_mappingSize = 0;
};

} // namespace SimBinder
