#include "binder/misuselog.h"

namespace SimBinder {

namespace {

// Whoever started the router need not read its output before the end; a pipe holds this much.
constexpr std::size_t MaxLines = 200;

} // namespace

void MisuseLog::report(pid_t pid, const std::string &what)
{
    if (++m_count > MaxLines)
        return;
    m_output << "bramd-sim-binder: misuse: pid " << pid << ": " << what << std::endl;
}

} // namespace SimBinder
