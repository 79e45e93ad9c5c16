#include "fuzz/encoding.h"

// A Bundle, as the runtime packs the extras of what it starts; also without its head, as a map and
// as a single value.

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const int form = input.below(3);
    const QByteArray message = input.rest();
    if (form == 0) {
        Encoding::expectStable(
            message, [](BinderParcel &parcel) { return parcel.readBundle(); },
            [](BinderParcel &parcel, const QVariantMap &value) { parcel.writeBundle(value); });
    } else if (form == 1) {
        Encoding::expectStable(
            message, [](BinderParcel &parcel) { return parcel.readMap(); },
            [](BinderParcel &parcel, const QVariantMap &value) {
                parcel.writeInt32(value.size());
                for (auto pair = value.begin(); pair != value.end(); ++pair) {
                    parcel.writeString(pair.key());
                    parcel.writeValue(pair.value());
                }
            });
    } else {
        Encoding::expectStable(
            message, [](BinderParcel &parcel) { return parcel.readValue(); },
            [](BinderParcel &parcel, const QVariant &value) { parcel.writeValue(value); });
    }
}
