#include "binder/misuselog.h"

namespace SimBinder {

void MisuseLog::report(pid_t pid, const std::string &what)
{
    ++m_count;
    m_output << "bramd-sim-binder: misuse: pid " << pid << ": " << what << std::endl;
}

} // namespace SimBinder
