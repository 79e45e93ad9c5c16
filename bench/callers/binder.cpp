// usage: caller_binder NAME WORK N
// Calls the binder service of that name with bare driver commands and tells what a call takes. WORK
// is one of
//   small     N calls of a code that nobody knows, with one word: the median
//   announce  N launchers are announced: the mean

#include "common/cost.h"
#include "common/rawbinder.h"
#include "common/sample.h"

#include <QString>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr char Device[] = "/dev/marshhopper";
constexpr char Interface[] = "umbra.applications.IUmbraNativeLauncherService";
constexpr std::uint32_t LauncherAdded = 1;
constexpr std::uint32_t UnknownCode = 1000;

RawParcel announcement(int number)
{
    RawParcel parcel(Interface);
    parcel.appendString(Sample::packageName(number));
    parcel.appendString(Sample::className(number));
    parcel.appendString(Sample::label(number));
    parcel.appendString(Sample::version());
    parcel.appendBytes(Sample::icon(number));
    return parcel;
}

void announce(RawBinder &binder, std::uint32_t handle, int count)
{
    std::vector<RawParcel> parcels;
    for (int number = 0; number < count; ++number)
        parcels.push_back(announcement(number));
    printCost(count, [&] {
        for (const RawParcel &parcel : parcels)
            binder.call(handle, LauncherAdded, parcel);
    });
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: caller_binder NAME WORK N\n");
        return EXIT_FAILURE;
    }
    RawBinder binder(Device);
    const std::uint32_t handle = binder.handleOf(QString::fromLocal8Bit(argv[1]));
    if (handle == 0) {
        std::fprintf(stderr, "caller_binder: nobody is called %s\n", argv[1]);
        return EXIT_FAILURE;
    }
    const int count = std::atoi(argv[3]);
    if (std::strcmp(argv[2], "announce") == 0) {
        announce(binder, handle, count);
    } else {
        RawParcel parcel(Interface);
        parcel.appendInt32(1);
        printMedianCost(count, [&](int) { binder.call(handle, UnknownCode, parcel); });
    }
    return EXIT_SUCCESS;
}
