// usage: host_services
// systemd and timedated, as far as the daemon asks them before it takes its name: they answer as
// promptly as the real ones, and systemd tells as much of the unit. On the simulated phone both are
// Python programs, which take longer for an answer than the daemon for its whole start.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <systemd/sd-bus.h>
#include <utility>

namespace {

constexpr char UnitPath[] = "/org/freedesktop/systemd1/unit/umbravm_2eservice";
constexpr char Manager[] = "org.freedesktop.systemd1.Manager";
constexpr char TimeDate[] = "org.freedesktop.timedate1";

// The properties of org.freedesktop.systemd1.Unit by their types, for a unit that is stopped.
constexpr std::pair<const char *, const char *> Texts[] = {
    {"Id", "umbravm.service"},
    {"Following", ""},
    {"Description", "Android runtime"},
    {"LoadState", "loaded"},
    {"ActiveState", "inactive"},
    {"FreezerState", "running"},
    {"SubState", "dead"},
    {"FragmentPath", "/lib/systemd/system/umbravm.service"},
    {"SourcePath", ""},
    {"UnitFileState", "disabled"},
    {"UnitFilePreset", "enabled"},
    {"OnSuccessJobMode", "fail"},
    {"OnFailureJobMode", "replace"},
    {"JobTimeoutAction", "none"},
    {"JobTimeoutRebootArgument", ""},
    {"StartLimitAction", "none"},
    {"FailureAction", "none"},
    {"SuccessAction", "none"},
    {"RebootArgument", ""},
    {"CollectMode", "inactive"},
};
constexpr const char *Lists[] = {
    "Names",
    "Requires",
    "Requisite",
    "Wants",
    "BindsTo",
    "PartOf",
    "Upholds",
    "RequiredBy",
    "RequisiteOf",
    "WantedBy",
    "BoundBy",
    "UpheldBy",
    "ConsistsOf",
    "Conflicts",
    "ConflictedBy",
    "Before",
    "After",
    "OnSuccess",
    "OnSuccessOf",
    "OnFailure",
    "OnFailureOf",
    "Triggers",
    "TriggeredBy",
    "PropagatesReloadTo",
    "ReloadPropagatedFrom",
    "PropagatesStopTo",
    "StopPropagatedFrom",
    "JoinsNamespaceOf",
    "SliceOf",
    "RequiresMountsFor",
    "Documentation",
    "DropInPaths",
    "CanClean",
    "Markers",
    "Refs",
};
constexpr const char *Times[] = {
    "StateChangeTimestamp",   "StateChangeTimestampMonotonic",
    "InactiveExitTimestamp",  "InactiveExitTimestampMonotonic",
    "ActiveEnterTimestamp",   "ActiveEnterTimestampMonotonic",
    "ActiveExitTimestamp",    "ActiveExitTimestampMonotonic",
    "InactiveEnterTimestamp", "InactiveEnterTimestampMonotonic",
    "JobTimeoutUSec",         "JobRunningTimeoutUSec",
    "ConditionTimestamp",     "ConditionTimestampMonotonic",
    "AssertTimestamp",        "AssertTimestampMonotonic",
    "StartLimitIntervalUSec",
};
constexpr const char *Truths[] = {
    "CanStart",          "CanStop",
    "CanReload",         "CanIsolate",
    "CanFreeze",         "StopWhenUnneeded",
    "RefuseManualStart", "RefuseManualStop",
    "AllowIsolate",      "DefaultDependencies",
    "IgnoreOnIsolate",   "NeedDaemonReload",
    "ConditionResult",   "AssertResult",
    "Transient",         "Perpetual",
};

int answerUnit(sd_bus_message *call, void *, sd_bus_error *)
{
    if (sd_bus_message_is_method_call(call, "org.freedesktop.DBus.Properties", "GetAll") <= 0)
        return 0;
    sd_bus_message *reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_open_container(reply, 'a', "{sv}");
    for (const auto &[name, text] : Texts)
        sd_bus_message_append(reply, "{sv}", name, "s", text);
    for (const char *name : Lists)
        sd_bus_message_append(reply, "{sv}", name, "as", 0);
    for (const char *name : Times)
        sd_bus_message_append(reply, "{sv}", name, "t", std::uint64_t(0));
    for (const char *name : Truths)
        sd_bus_message_append(reply, "{sv}", name, "b", 0);
    sd_bus_message_append(reply, "{sv}", "StartLimitBurst", "u", 5U);
    sd_bus_message_append(reply, "{sv}", "FailureActionExitStatus", "i", -1);
    sd_bus_message_append(reply, "{sv}", "SuccessActionExitStatus", "i", -1);
    sd_bus_message_append(reply, "{sv}", "Job", "(uo)", 0U, "/");
    sd_bus_message_append(reply, "{sv}", "LoadError", "(ss)", "", "");
    sd_bus_message_append(reply, "{sv}", "Conditions", "a(sbbsi)", 0);
    sd_bus_message_append(reply, "{sv}", "Asserts", "a(sbbsi)", 0);
    sd_bus_message_append(reply, "{sv}", "InvocationID", "ay", 0);
    sd_bus_message_append(reply, "{sv}", "ActivationDetails", "a(ss)", 0);
    sd_bus_message_close_container(reply);
    const int sent = sd_bus_send(sd_bus_message_get_bus(call), reply, nullptr);
    sd_bus_message_unref(reply);
    return sent;
}

int subscribe(sd_bus_message *call, void *, sd_bus_error *)
{
    return sd_bus_reply_method_return(call, "");
}

int loadUnit(sd_bus_message *call, void *, sd_bus_error *)
{
    return sd_bus_reply_method_return(call, "o", UnitPath);
}

int timeZone(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *,
             sd_bus_error *)
{
    return sd_bus_message_append(reply, "s", "Europe/Helsinki");
}

constexpr sd_bus_vtable ManagerTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Subscribe", "", "", subscribe, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("LoadUnit", "s", "o", loadUnit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

constexpr sd_bus_vtable TimeDateTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Timezone", "s", timeZone, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_VTABLE_END,
};

} // namespace

int main()
{
    sd_bus *bus = nullptr;
    if (sd_bus_open_system(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/systemd1", Manager, ManagerTable,
                                 nullptr) < 0 ||
        sd_bus_add_object(bus, nullptr, UnitPath, answerUnit, nullptr) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/timedate1", TimeDate,
                                 TimeDateTable, nullptr) < 0 ||
        sd_bus_request_name(bus, TimeDate, 0) < 0 ||
        sd_bus_request_name(bus, "org.freedesktop.systemd1", 0) < 0) {
        std::fprintf(stderr, "host_services: no system bus, or the names are taken\n");
        return EXIT_FAILURE;
    }
    for (;;) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0 || (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0))
            return EXIT_FAILURE;
    }
}
