"""The daemon as a service of the system bus: calls, start-up, and what it takes when idle."""

import os
import time
from contextlib import contextmanager
from pathlib import Path

from gi.repository import Gio, GLib

from phone.buses import SYSTEM_SOCKET, Bus
from phone.daemon import LOGGING, SERVICE
from phone.login import LoginState
from phone.phone import clean
from phone.process import Process
from phone.runtime import Runtime
from phone.waiting import wait_for

from rounds import QUIET, cost, in_turns, program

CALLS = 4000
STARTS_PER_ROUND = 2
MAX_START = 1.5
SYSTEMD = "org.freedesktop.systemd1"
PEERS = {"Qt": "bench.qt", "sd-bus": "bench.sdbus"}
PEER_PROGRAMS = {"Qt": "floor_qtservice", "sd-bus": "floor_sdbusservice"}
ENVIRONMENT = {**LOGGING, **QUIET}


def measure(table, rounds):
    daemon = Path(os.environ["BRAMD_BUILD_DIR"]) / "sim" / "bramd"
    try:
        with host() as bus:
            starts(table, rounds, bus, daemon, MAX_START)
            with services(bus, daemon) as processes:
                idle(table, processes)
                calls(table, processes, rounds)
    finally:
        clean()


@contextmanager
def host():
    """What the daemon finds when it starts: a system bus, a user who is logged in, a runtime that is
    stopped, and services that answer as promptly as the real ones. Yields the bus."""
    LoginState().login()
    Runtime(os.environ["BRAMD_BUILD_DIR"])
    bus = Bus("system", SYSTEM_SOCKET)
    answering = Process("host", [program("host_services")],
                        {"DBUS_SYSTEM_BUS_ADDRESS": bus.address})
    try:
        bus.wait_for_owner(SYSTEMD)
        yield bus
    finally:
        answering.stop()
        bus.stop()


def starts(table, rounds, bus, daemon, target):
    """From exec to the name on the bus. The target is for the ratios."""
    taken = in_turns(rounds * STARTS_PER_ROUND, {
        "ours": lambda: start(bus, SERVICE, [daemon]),
        "Qt": lambda: start(bus, PEERS["Qt"], peer("Qt")),
        "login": lambda: start(bus, PEERS["Qt"], [*peer("Qt"), "login"])})

    def row(what, key, floor_name, floor, target):
        table.add(f"start-up, {what}", taken["ours"][key] / 1000, "ms", target,
                  floor_name=floor_name, floor=taken[floor][key] / 1000)
    row("time", "wall", "Qt service that looks for a login", "login", target)
    row("time", "wall", "minimal Qt service", "Qt", None)
    row("processor time", "cpu", "minimal Qt service", "Qt", target)


def idle(table, processes):
    ours, peer = (status(processes[name]) for name in ("ours", "Qt"))
    for key, what, target in (("VmRSS", "resident memory", 1.25),
                              ("RssAnon", "anonymous memory", 1.3)):
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


def start(bus, name, command):
    """Starts a service and ends it again; returns the microseconds until it had its name."""
    owned = []
    watch = Gio.bus_watch_name_on_connection(
        bus.connection, name, Gio.BusNameWatcherFlags.NONE,
        lambda *_: owned.append(time.monotonic()), None)
    begin = time.monotonic()
    process = run(bus, name, command)
    try:
        while not owned:
            GLib.MainContext.default().iteration(True)
            if not process.running:
                raise AssertionError(process)
        return {"wall": (owned[0] - begin) * 1e6, "cpu": processor_time(process) / 1000}
    finally:
        Gio.bus_unwatch_name(watch)
        process.stop()
        bus.wait_until_ownerless(name)


def run(bus, name, command):
    return Process(name, command, {**ENVIRONMENT, "DBUS_SYSTEM_BUS_ADDRESS": bus.address})


def peer(key):
    return [program(PEER_PROGRAMS[key]), PEERS[key]]


@contextmanager
def services(bus, daemon):
    """The daemon and its peers, all serving; yields their processes by the names of the figures."""
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address
    commands = {"ours": (SERVICE, [daemon]), **{key: (name, peer(key)) for key, name in PEERS.items()}}
    processes = {}
    try:
        for key, (name, command) in commands.items():
            processes[key] = run(bus, name, command)
            bus.wait_for_owner(name)
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
