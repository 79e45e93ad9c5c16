#include "platform/binder/localobject.h"

#include "platform/binder/outgoingdata.h"
#include "platform/binder/process.h"

#include <utility>

namespace Binder {

LocalObject::LocalObject(std::shared_ptr<Process> process, const QByteArray &descriptor,
                         IncomingCall call)
    : m_process(std::move(process))
    , m_descriptor(descriptor)
    , m_id(m_process->addLocalObject(descriptor, std::move(call)))
{
}

LocalObject::~LocalObject()
{
    m_process->dropLocalObject(m_id);
}

std::unique_ptr<OutgoingReply> LocalObject::createReply() const
{
    return std::make_unique<OutgoingReply>(std::make_unique<OutgoingData>());
}

} // namespace Binder
