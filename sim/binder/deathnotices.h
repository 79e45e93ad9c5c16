#pragma once

#include "binder/work.h"

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

namespace SimBinder {

class Client;
struct Reference;

/// The death notifications of one open file: one per reference, told while the program is idle,
/// acknowledged by it, and confirmed when it takes the request back.
///
/// The functions that carry out commands return what the program did wrong, or null.
class DeathNotices
{
public:
    struct Notice
    {
        std::uint32_t code = 0; ///< BR_DEAD_BINDER or BR_CLEAR_DEATH_NOTIFICATION_DONE
        std::uint64_t cookie = 0;
    };

    explicit DeathNotices(Client &client)
        : m_client(client)
    {
    }

    const char *request(std::uint32_t handle, std::uint64_t cookie);
    const char *clear(std::uint32_t handle, std::uint64_t cookie);
    const char *done(std::uint64_t cookie);

    /// The reference's node is dead.
    void nodeDied(Reference &reference);

    /// The reference is going: its request goes with it, silently, told or not.
    void forget(Reference &reference);

    /// A queued notice is being read.
    Notice read(const std::shared_ptr<Death> &death);

private:
    void confirmClearing(const std::shared_ptr<Death> &death);

    Client &m_client;
    std::vector<std::shared_ptr<Death>> m_unanswered;
    std::multiset<std::uint64_t> m_cookiesToAnswer; // also of references that are gone since
};

} // namespace SimBinder
