#include "platform/binder/message.h"

#include "platform/binder/incomingdata.h"
#include "platform/binder/interfacetoken.h"
#include "platform/binder/outgoingdata.h"

#include <utility>

namespace Binder {

OutgoingRequest::OutgoingRequest(std::unique_ptr<OutgoingData> data)
    : m_data(std::move(data))
{
}

OutgoingRequest::~OutgoingRequest() = default;

Writer OutgoingRequest::writer()
{
    return Writer(m_data.get());
}

OutgoingReply::OutgoingReply(std::unique_ptr<OutgoingData> data)
    : m_data(std::move(data))
{
}

OutgoingReply::~OutgoingReply() = default;

Writer OutgoingReply::writer()
{
    return Writer(m_data.get());
}

IncomingRequest::IncomingRequest(std::unique_ptr<IncomingData> data,
                                 const QByteArray &expectedDescriptor)
    : m_data(std::move(data))
{
    const InterfaceToken::Found token = InterfaceToken::read(*m_data, expectedDescriptor);
    m_interfaceToken = token.descriptor;
    m_payload = token.payload;
}

IncomingRequest::~IncomingRequest() = default;

Reader IncomingRequest::reader() const
{
    return Reader(m_data.get(), m_payload);
}

IncomingReply::IncomingReply(std::unique_ptr<IncomingData> data)
    : m_data(std::move(data))
{
}

IncomingReply::~IncomingReply() = default;

Reader IncomingReply::reader() const
{
    return Reader(m_data.get());
}

bool IncomingReply::readInt32(qint32 *value) const
{
    return reader().readInt32(value);
}

} // namespace Binder
