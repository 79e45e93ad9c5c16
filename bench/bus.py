"""The daemon as a service of the system bus: calls, start-up, and what it takes when idle."""

import os
import time
from contextlib import contextmanager
from pathlib import Path

from gi.repository import Gio, GLib

from phone.daemon import LOGGING, SERVICE
from phone.phone import Phone, clean
from phone.process import Process
from phone.waiting import wait_for

from rounds import QUIET, cost, in_turns, program

CALLS = 4000
STARTS_PER_ROUND = 2
PEERS = {"Qt": "bench.qt", "sd-bus": "bench.sdbus"}
ENVIRONMENT = {**LOGGING, **QUIET}


def measure(table, rounds):
    try:
        with Phone() as phone:
            starts(table, phone, rounds)
            with services(phone) as processes:
                idle(table, processes)
                calls(table, processes, rounds)
    finally:
        clean()


def starts(table, phone, rounds):
    """From exec to the name on the bus."""
    taken = in_turns(rounds * STARTS_PER_ROUND, {
        "ours": lambda: start(phone, SERVICE), "Qt": lambda: start(phone, PEERS["Qt"])})
    for key, what in (("wall", "time"), ("cpu", "processor time")):
        table.add(f"start-up, {what}", taken["ours"][key] / 1000, "ms", 1.5,
                  floor_name="minimal Qt service", floor=taken["Qt"][key] / 1000)


def idle(table, processes):
    ours, peer = (status(processes[name]) for name in ("ours", "Qt"))
    for key, what, target in (("VmRSS", "resident memory", 1.25),
                              ("RssAnon", "anonymous memory", 2.0)):
        table.add(f"idle: {what}", ours[key], "kB", target, floor_name="minimal Qt service",
                  floor=peer[key])


def calls(table, processes, rounds):
    names = {"ours": SERVICE, **PEERS}
    taken = in_turns(rounds, {
        name: lambda name=name: call(names[name], processes[name]) for name in processes})
    for peer in PEERS:
        judged = peer == "Qt"
        table.add("D-Bus calls a second", 1e6 / taken["ours"]["wall"], "", 0.9 if judged else None,
                  sense=">=", floor_name=f"minimal {peer} service", floor=1e6 / taken[peer]["wall"])
        table.add("D-Bus call, service's processor time", taken["ours"]["service"], "us",
                  1.15 if judged else None, floor_name=f"minimal {peer} service",
                  floor=taken[peer]["service"])


def call(name, process):
    """Microseconds a call: wall time, and the service's processor time."""
    before = processor_time(process)
    taken = cost("caller_bus", name, CALLS)
    return {**taken, "service": (processor_time(process) - before) / CALLS / 1000}


def start(phone, name):
    """Starts a service and ends it again; returns the microseconds until it had its name."""
    owned = []
    watch = Gio.bus_watch_name_on_connection(
        phone.system_bus.connection, name, Gio.BusNameWatcherFlags.NONE,
        lambda *_: owned.append(time.monotonic()), None)
    begin = time.monotonic()
    process = run(phone, name)
    try:
        while not owned:
            GLib.MainContext.default().iteration(True)
            if not process.running:
                raise AssertionError(process)
        return {"wall": (owned[0] - begin) * 1e6, "cpu": processor_time(process) / 1000}
    finally:
        Gio.bus_unwatch_name(watch)
        process.stop()
        phone.system_bus.wait_until_ownerless(name)


def run(phone, name):
    programs = {SERVICE: [Path(os.environ["BRAMD_BUILD_DIR"]) / "sim" / "bramd"],
                PEERS["Qt"]: [program("floor_qtservice"), name],
                PEERS["sd-bus"]: [program("floor_sdbusservice"), name]}
    return Process(name, programs[name],
                   {**ENVIRONMENT, "DBUS_SYSTEM_BUS_ADDRESS": phone.system_bus.address})


@contextmanager
def services(phone):
    """The daemon and its peers, all serving; yields their processes by the names of the figures."""
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = phone.system_bus.address
    processes = {}
    try:
        for key, name in (("ours", SERVICE), *PEERS.items()):
            processes[key] = run(phone, name)
            phone.system_bus.wait_for_owner(name)
        for process in processes.values():
            wait_until_asleep(process)
        yield processes
    finally:
        del os.environ["DBUS_SYSTEM_BUS_ADDRESS"]
        for process in processes.values():
            process.stop()


def wait_until_asleep(process):
    """Until it has taken no processor time for half a second."""
    def asleep():
        before = processor_time(process)
        time.sleep(0.5)
        return processor_time(process) == before
    wait_for(asleep, lambda: f"an idle {process}", 30)


def processor_time(process):
    """Nanoseconds of all threads so far."""
    tasks = Path(f"/proc/{process.pid}/task").iterdir()
    return sum(int((task / "schedstat").read_text("ascii").split()[0]) for task in tasks)


def status(process):
    """The sizes in /proc/.../status, in kB."""
    lines = Path(f"/proc/{process.pid}/status").read_text("ascii").splitlines()
    return {key: int(rest.split()[0]) for key, _, rest in (line.partition(":") for line in lines)
            if rest.endswith(" kB")}
