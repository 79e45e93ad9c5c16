"""What can be counted, on the real daemon: exact on any machine, however busy."""

import os
import subprocess
import time
from contextlib import contextmanager
from pathlib import Path

from daemonsteps import wait_until_connected
from parcels import ADD_LAUNCHER, launcher
from phone.phone import Phone, clean

from trace import Trace

LAUNCHERS = 20
SHORT_IDLE_S, LONG_IDLE_S = 5, 60
MAX_DAEMON_KB = 600
# Only what wait_until_connected() waits for.
QUIET = {"QT_LOGGING_RULES": "*.debug=false;com.corvo.bramd.binder.debug=true"}
THREADS = 2  # the event loop's and Qt's D-Bus connection


def measure(table, idle_seconds):
    if is_optimised():
        table.add("size of the stripped daemon", stripped_size() / 1000, "kB", MAX_DAEMON_KB)
    with traced_phone() as (phone, trace):
        begin = trace.wait_until_quiet()
        announce(phone)
        first = trace.calls(begin)
        begin = trace.mark()
        announce(phone)
        again = trace.calls(begin)
        for name, calls, syncs, files in (("first announcement", first, 3, 3),
                                          ("announced again", again, 0, 0)):
            table.add(f"{name}: fdatasync", calls.syncs / LAUNCHERS, "", syncs, sense="=")
            table.add(f"{name}: files created", calls.created / LAUNCHERS, "", files, sense="=")
            table.add(f"{name}: system calls", calls.total / LAUNCHERS, "", None)
        table.add("threads", len(os.listdir(f"/proc/{phone.daemon.process.pid}/task")), "",
                  THREADS, sense="=")
        idle(table, trace, "active", idle_seconds)
        phone.stop_runtime()
        idle(table, trace, "stopped", idle_seconds)


def idle(table, trace, state, seconds):
    """Nobody asks for anything: whatever the daemon does, it does by itself."""
    quiet = trace.wait_until_quiet()
    time.sleep(seconds)
    table.add(f"system calls in {seconds} s, runtime {state}", trace.calls(quiet).total, "", 0,
              sense="=")


def announce(phone):
    for number in range(LAUNCHERS):
        name = f"org.example.app{number}"
        data = launcher(name, f"{name}.Main", f"App {number}", icon=bytes([number]) * 20480)
        assert phone.runtime.call_launcher(ADD_LAUNCHER, data) == (0, b"")


@contextmanager
def traced_phone():
    """A phone whose daemon is connected to the runtime, and traced."""
    try:
        with Phone() as phone:
            trace = Trace(Path("/run/phone/daemon.trace"))
            phone.start_runtime()
            phone.start_daemon(QUIET,
                               prefix=trace.prefix)
            wait_until_connected(phone)
            yield phone, trace
    finally:
        clean()


def is_optimised():
    """Whether its size says anything of what is installed."""
    cache = (Path(os.environ["BRAMD_BUILD_DIR"]) / "CMakeCache.txt").read_text("utf-8")
    return "CMAKE_BUILD_TYPE:STRING=Debug" not in cache


def stripped_size():
    daemon = Path(os.environ["BRAMD_BUILD_DIR"]) / "src" / "daemon" / "bramd"
    stripped = Path("/run/bramd.stripped")
    subprocess.run(["/usr/bin/strip", "-o", stripped, daemon], check=True)
    return stripped.stat().st_size
