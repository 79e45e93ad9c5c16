#pragma once

#include "binder/client.h"
#include "binder/protocol.h"
#include "binder/uniquefd.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SimBinder {

class ReturnWriter;

/// Rare things that a kernel does and every program must bear, made frequent. 0: never.
struct Quirks
{
    unsigned interruptedReads = 0; ///< every n-th read fails with EINTR, its write half done
    unsigned emptyReads = 0;       ///< every n-th read returns a lone BR_NOOP
};

/// One frame as it came from a driver, without its header.
struct Request
{
    Operation operation = Operation::Open;
    std::vector<std::uint8_t> body;
    std::vector<UniqueFd> files;
};

/// What goes back to it. Files that are only lent stay open here.
struct Answer
{
    std::int32_t result = 0;
    std::vector<std::uint8_t> body;
    std::vector<UniqueFd> files;
    int lentFile = -1;
};

/// Carries out the requests of one open file: decodes what came over the socket, hands it to the
/// parts that play the kernel, encodes what comes of it.
class RequestHandler
{
public:
    RequestHandler(Context &context, const Quirks &quirks, pid_t pid, uid_t euid, int readinessFd);

    /// The answer; nothing when the file is closed, or was misused in a way that ends it.
    std::optional<Answer> handle(Request request);

    bool hasWork() const { return m_client.hasWork(); }
    Books books() const { return m_client.books(); }

    /// Counts and reports a misuse by this file's owner.
    void note(const std::string &misuse) const;

private:
    std::optional<Answer> open(const Request &request);
    std::optional<Answer> map(const Request &request);
    std::optional<Answer> control(const Request &request);
    std::optional<Answer> writeRead(Request &request);
    std::optional<Answer> end(const char *misuse) const;
    int read(const WriteReadRequest &header, ReturnWriter *returns);
    static bool isDue(unsigned period, unsigned *count);

    Context &m_context;
    Quirks m_quirks;
    unsigned m_readsSinceInterrupted = 0;
    unsigned m_readsSinceEmpty = 0;
    int m_readinessFd;
    bool m_isOpen = false;
    Client m_client;
};

} // namespace SimBinder
