#include "platform/binder/servicename.h"

#include "platform/binder/namekeeper.h"
#include "platform/binder/process.h"

#include <utility>

namespace Binder {

ServiceName::ServiceName(std::shared_ptr<Process> process, quint64 registration)
    : m_process(std::move(process))
    , m_registration(registration)
{
}

ServiceName::~ServiceName()
{
    m_process->nameKeeper().release(m_registration);
}

} // namespace Binder
