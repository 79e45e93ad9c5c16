#pragma once

#include "binder/binderparcel.h"
#include "fuzz/fuzztarget.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/message.h"
#include "platform/binder/outgoingdata.h"

#include <memory>

/// Values of the parcel encodings, to and from messages that go through no driver.
namespace Encoding {

/// What `write` appends to an empty message.
template <typename Write>
QByteArray written(Write write)
{
    Binder::OutgoingData data;
    BinderParcel parcel((Binder::Writer(&data)));
    write(parcel);
    expect(data.isComplete(), "the message has room");
    return data.bytes();
}

/// What `read` makes of a message.
template <typename Read>
auto readFrom(const QByteArray &bytes, Read read)
{
    const Binder::IncomingReply reply(std::make_unique<Binder::IncomingData>(bytes));
    BinderParcel parcel(reply);
    return read(parcel);
}

/// Reads, writes and reads again: what has been written stays the same from then on.
template <typename Read, typename Write>
QByteArray expectStable(const QByteArray &message, Read read, Write write)
{
    const auto value = readFrom(message, read);
    const QByteArray first = written([&](BinderParcel &parcel) { write(parcel, value); });
    const auto again = readFrom(first, read);
    const QByteArray second = written([&](BinderParcel &parcel) { write(parcel, again); });
    expect(first == second, "what was written reads back");
    return first;
}

} // namespace Encoding
