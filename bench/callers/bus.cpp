// usage: caller_bus NAME N
// Calls getAndroidVersionData of the service N times, with eight calls under way at any time.

#include "common/cost.h"

#include <cstdlib>
#include <systemd/sd-bus.h>

namespace {

constexpr int UnderWay = 8;

struct Calls
{
    sd_bus *bus = nullptr;
    const char *service = nullptr;
    int toSend = 0;
    int toCome = 0;
};

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "caller_bus: %s\n", what);
    std::exit(EXIT_FAILURE);
}

int onReply(sd_bus_message *reply, void *data, sd_bus_error *);

void send(Calls *calls)
{
    if (sd_bus_call_method_async(calls->bus, nullptr, calls->service, "/com/corvo/bramd",
                                 "com.corvo.bramd", "getAndroidVersionData", onReply, calls,
                                 nullptr) < 0)
        fail("cannot call");
    --calls->toSend;
}

int onReply(sd_bus_message *reply, void *data, sd_bus_error *)
{
    auto *calls = static_cast<Calls *>(data);
    if (sd_bus_message_is_method_error(reply, nullptr))
        fail(sd_bus_message_get_error(reply)->message);
    --calls->toCome;
    if (calls->toSend > 0)
        send(calls);
    return 0;
}

void callAll(Calls *calls)
{
    for (int i = 0; i < UnderWay && calls->toSend > 0; ++i)
        send(calls);
    while (calls->toCome > 0) {
        const int processed = sd_bus_process(calls->bus, nullptr);
        if (processed < 0 || (processed == 0 && sd_bus_wait(calls->bus, UINT64_MAX) < 0))
            fail("lost the bus");
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3)
        fail("usage: caller_bus NAME N");
    Calls calls;
    calls.service = argv[1];
    calls.toSend = calls.toCome = std::atoi(argv[2]);
    if (sd_bus_open_system(&calls.bus) < 0)
        fail("no system bus");
    printCost(calls.toCome, [&] { callAll(&calls); });
    sd_bus_unref(calls.bus);
    return EXIT_SUCCESS;
}
