#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <sys/types.h>

namespace SimBinder {

/// Counts what a correct program never does and the kernel only notes in its own log: a buffer
/// freed twice, a reference given back too often, an answer that nobody waits for. The first cases
/// get one line each, the rest are only counted.
class MisuseLog
{
public:
    explicit MisuseLog(std::ostream &output)
        : m_output(output)
    {
    }

    void report(pid_t pid, const std::string &what);
    std::size_t count() const { return m_count; }

private:
    std::ostream &m_output;
    std::size_t m_count = 0;
};

} // namespace SimBinder
