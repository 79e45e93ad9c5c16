// usage: floor_sdbusservice NAME
// The same service as floor_qtservice with systemd's D-Bus library, to show what Qt's costs.

#include <cstdlib>
#include <systemd/sd-bus.h>

namespace {

int getAndroidVersionData(sd_bus_message *call, void *, sd_bus_error *)
{
    return sd_bus_reply_method_return(call, "(iss)", 28, "9", "2021-05-05");
}

constexpr sd_bus_vtable Interface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("getAndroidVersionData", "", "(iss)", getAndroidVersionData,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

} // namespace

int main(int argc, char *argv[])
{
    sd_bus *bus = nullptr;
    if (argc != 2 || sd_bus_open_system(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/com/corvo/bramd", "com.corvo.bramd", Interface,
                                 nullptr) < 0 ||
        sd_bus_request_name(bus, argv[1], 0) < 0)
        return EXIT_FAILURE;
    for (;;) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0 || (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0))
            return EXIT_FAILURE;
    }
}
