#pragma once

#include "platform/binder/reader.h"
#include "platform/binder/types.h"
#include "platform/binder/writer.h"

#include <QByteArray>

#include <memory>

namespace Binder {

class IncomingData;
class OutgoingData;

/// A request under construction; Client::createRequest() writes the interface token first.
/// Deleting it releases it, sent or not.
class OutgoingRequest
{
public:
    explicit OutgoingRequest(std::unique_ptr<OutgoingData> data);
    ~OutgoingRequest();

    Writer writer();
    const OutgoingData &data() const { return *m_data; }

private:
    std::unique_ptr<OutgoingData> m_data;
};

/// A reply under construction, made by LocalObject::createReply() and handed back to the library
/// by the function that serves the incoming call.
class OutgoingReply
{
public:
    explicit OutgoingReply(std::unique_ptr<OutgoingData> data);
    ~OutgoingReply();

    Writer writer();
    const OutgoingData &data() const { return *m_data; }

private:
    std::unique_ptr<OutgoingData> m_data;
};

/// A received request. Valid until the serving function returns.
class IncomingRequest
{
public:
    IncomingRequest(std::unique_ptr<IncomingData> data, const QByteArray &expectedDescriptor);
    ~IncomingRequest();

    /// Starts behind the interface token.
    Reader reader() const;

    /// The descriptor in the request's interface token; null when the request has none.
    QByteArray interfaceToken() const { return m_interfaceToken; }

private:
    std::unique_ptr<IncomingData> m_data;
    QByteArray m_interfaceToken;
    std::size_t m_payload = 0;
};

/// A received reply; its buffer goes back to the driver when it is deleted.
class IncomingReply
{
public:
    explicit IncomingReply(std::unique_ptr<IncomingData> data);
    ~IncomingReply();

    Reader reader() const;

    /// Reads the first word of the reply. False, and `value` untouched, when there is none.
    bool readInt32(qint32 *value) const;

private:
    std::unique_ptr<IncomingData> m_data;
};

} // namespace Binder
