// usage: ours_intent WORK N
// The same intent as in floor_intent, with the daemon's codec: WORK is "encode", "decode", or
// "print", which shows the bytes.

#include "binder/binderparcel.h"
#include "binder/intentcodec.h"
#include "common/cost.h"
#include "common/intentrecord.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/reader.h"
#include "platform/binder/writer.h"

#include <cstdlib>

namespace {

Intent sample()
{
    const IntentRecord record;
    Intent intent;
    intent.action = record.action;
    intent.data = record.data;
    intent.type = record.type;
    intent.flags = record.flags;
    intent.package = record.package;
    intent.componentPackage = record.componentPackage;
    intent.componentClass = record.componentClass;
    intent.categories = record.categories;
    intent.extras = record.extras;
    return intent;
}

QByteArray encode(const Intent &intent)
{
    Binder::OutgoingData data;
    BinderParcel parcel{Binder::Writer(&data)};
    writeIntent(parcel, intent);
    return data.bytes();
}

Intent decode(const QByteArray &bytes)
{
    const Binder::IncomingData data(bytes);
    BinderParcel parcel{Binder::Reader(&data)};
    return readIntent(parcel);
}

} // namespace

int main(int argc, char *argv[])
{
    const QByteArray work = argc == 3 ? argv[1] : "";
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    const Intent intent = sample();
    const QByteArray bytes = encode(intent);
    if (work == "print") {
        std::puts(bytes.toHex().constData());
    } else if (work == "encode") {
        printCost(count, [&] {
            for (int i = 0; i < count; ++i)
                encode(intent);
        });
    } else {
        if (!(decode(bytes) == intent))
            return EXIT_FAILURE;
        printCost(count, [&] {
            for (int i = 0; i < count; ++i)
                decode(bytes);
        });
    }
    return EXIT_SUCCESS;
}
