#pragma once

#include "binder/binderparcel.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/message.h"
#include "platform/binder/outgoingdata.h"

#include <QByteArray>

#include <memory>

/// Messages that go through no driver, for tests of the encodings.
namespace Messages {

/// Bytes from hexadecimal text; blanks between the digits are for the reader.
inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}

/// What `write` appends to an empty message.
template <typename Write>
QByteArray written(Write write)
{
    Binder::OutgoingData data;
    BinderParcel parcel((Binder::Writer(&data)));
    write(parcel);
    return data.bytes();
}

/// A received message and the parcel that reads it.
struct Received
{
    explicit Received(const QByteArray &content)
        : reply(std::make_unique<Binder::IncomingData>(content))
        , parcel(reply)
    {
    }

    Binder::IncomingReply reply;
    BinderParcel parcel;
};

} // namespace Messages
