#include "binder/binderparcel.h"
#include "fuzz/fuzztarget.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/message.h"
#include "platform/binder/outgoingdata.h"

#include <string>
#include <vector>

// A message: where it says that objects lie, what is read from it, and its bytes.

namespace {

using Binder::IncomingData;
using Binder::OutgoingData;
using Binder::Reader;
using Binder::Writer;

// One function per kind: reads an item and, when there is one, writes it.

template <typename Value, bool (Reader::*Read)(Value *), void (Writer::*Write)(Value)>
bool copyNumber(Reader &reader, Writer writer)
{
    Value value = {};
    if (!(reader.*Read)(&value))
        return false;
    (writer.*Write)(value);
    return true;
}

bool copyString(Reader &reader, Writer writer)
{
    const char16_t *units = nullptr;
    int length = 0;
    if (!reader.readString16(&units, &length))
        return false;
    if (units != nullptr) { // every unit can be read
        const std::u16string text(units, static_cast<std::size_t>(length));
        writer.appendString16(text.data(), length);
    } else {
        writer.appendString16(nullptr, 0);
    }
    return true;
}

bool copyByteArray(Reader &reader, Writer writer)
{
    const char *bytes = nullptr;
    int size = 0;
    if (!reader.readByteArray(&bytes, &size))
        return false;
    writer.appendByteArray(QByteArray(bytes, size));
    return true;
}

bool copyObject(Reader &reader, Writer writer)
{
    std::shared_ptr<Binder::RemoteObject> object;
    if (!reader.readNullableObject(&object))
        return false;
    expect(object == nullptr, "no objects of others where no driver is");
    writer.appendLocalObject(nullptr);
    return true;
}

using Copy = bool (*)(Reader &reader, Writer writer);
const Copy Copies[] = {
    copyNumber<qint32, &Reader::readInt32, &Writer::appendInt32>,
    copyNumber<qint64, &Reader::readInt64, &Writer::appendInt64>,
    copyNumber<bool, &Reader::readBool, &Writer::appendBool>,
    copyNumber<double, &Reader::readDouble, &Writer::appendDouble>,
    copyString,
    copyByteArray,
    copyObject,
};

void copyOnce(Copy copy, Reader &reader)
{
    const std::size_t before = reader.bytesRemaining();
    OutgoingData first;
    const bool done = copy(reader, Writer(&first));
    expect(done ? reader.bytesRemaining() < before : reader.bytesRemaining() == before,
           "a read consumes its item, a failed one nothing");
    if (!done)
        return;

    const IncomingData message(first.bytes());
    Reader again(&message);
    OutgoingData second;
    expect(copy(again, Writer(&second)) && again.atEnd(), "what was written can be read");
    expect(first.bytes() == second.bytes(), "what was read is what was written");
}

/// The same message by the reader that never fails.
void readAsParcel(BinderParcel parcel, const QByteArray &kinds)
{
    for (const char kind : kinds) {
        const std::size_t before = parcel.bytesRemaining();
        switch (kind) {
        case 0:
            parcel.readInt32();
            break;
        case 1:
            parcel.readInt64();
            break;
        case 2:
            parcel.readBool();
            break;
        case 3:
            parcel.readDouble();
            break;
        case 4:
            parcel.readStringList();
            break;
        case 5:
            parcel.readByteArray();
            break;
        case 6:
            parcel.readNullableObject();
            break;
        default:
            parcel.readUri();
            break;
        }
        expect(parcel.bytesRemaining() <= before, "reads go forward");
    }
}

} // namespace

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    std::vector<quint64> objects;
    for (int count = input.below(16); count > 0; --count)
        objects.push_back(input.number<quint16>());
    QByteArray kinds = input.shortBytes();
    for (char &kind : kinds)
        kind = static_cast<char>(static_cast<unsigned char>(kind) % 8);
    const QByteArray bytes = input.rest();

    const IncomingData data(bytes, objects);
    Reader reader(&data);
    for (const char kind : qAsConst(kinds)) {
        if (kind < static_cast<int>(std::size(Copies)))
            copyOnce(Copies[static_cast<int>(kind)], reader);
    }

    const Binder::IncomingRequest request(std::make_unique<IncomingData>(bytes, objects), "a.b");
    readAsParcel(BinderParcel(request), kinds);
}
