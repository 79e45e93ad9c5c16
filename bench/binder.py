"""Binder calls into the daemon and out of it, and announcements from call to file.

Everybody goes through the same driver. The simulated one is a socket to another process, which takes
far longer than a kernel's: the ratios are then kinder than on a device. The kernel's is to be had in
the machine that `run --vm` boots."""

from contextlib import contextmanager
from dataclasses import dataclass

from daemonsteps import wait_until_connected
from phone.phone import Phone, clean
from phone.process import Process
from phone.waiting import wait_for

import files
from bus import status
from rounds import cost, in_turns, program

CALLS = 1000
APPS = 200
MANY_APPS = 1000
MAX_GROWTH_KB = 1200
OURS = "umbra.launcher"
SERVERS = {"bench.blocking": "blocking", "bench.qt": "qt", "bench.files": "files"}
# Only what wait_until_connected() waits for.
QUIET = {"QT_LOGGING_RULES": "*.debug=false;com.corvo.bramd.binder.debug=true"}


@dataclass(frozen=True)
class Driver:
    """A binder driver, and how the names of the programs end that are linked for it."""

    name: str
    ending: str

    def call(self, name, work, count):
        """Somebody calls the binder service of that name."""
        return cost("caller_binder" + self.ending, name, work, count)

    def call_out(self, name, count):
        """The daemon's code does."""
        return cost("ours_binderclient" + self.ending, name, count)

    def serve(self, name):
        """The process of one of SERVERS."""
        return Process(name, [program("floor_binderserver" + self.ending), name, SERVERS[name]])


SIMULATED = Driver("simulated driver", "")
KERNELS = Driver("kernel's driver", "_kernel")


def measure(table, rounds):
    try:
        with Phone() as phone:
            phone.start_runtime()
            phone.start_daemon(QUIET)
            measure_on(phone, phone.daemon.process, SIMULATED, table, rounds)
    finally:
        clean()


def measure_on(phone, daemon, driver, table, rounds):
    """On a phone whose runtime is started, and whose daemon logs what QUIET lets through; `daemon` is
    what has its process id."""
    wait_until_connected(phone)
    with servers(driver):
        memory(table, daemon, driver)
        small_calls(table, rounds, driver)
        announcements(table, rounds, driver)


def memory(table, daemon, driver):
    """What is kept of announcements once their files are written."""
    files.clean()
    before = status(daemon)["RssAnon"]
    driver.call(OURS, "announce", MANY_APPS)
    table.add(f"memory added by {MANY_APPS} launchers", status(daemon)["RssAnon"] - before, "kB",
              MAX_GROWTH_KB)


def small_calls(table, rounds, driver):
    taken = in_turns(rounds, {
        "in": lambda: driver.call(OURS, "small", CALLS),
        "qt": lambda: driver.call("bench.qt", "small", CALLS),
        "blocking": lambda: driver.call("bench.blocking", "small", CALLS),
        "out": lambda: driver.call_out("bench.blocking", CALLS)})

    def row(name, of, floor_name, floor, target):
        table.add(f"{name} ({driver.name})", taken[of]["wall"], "us", target,
                  floor_name=floor_name, floor=taken[floor]["wall"])
    row("incoming binder call", "in", "raw, in a Qt loop", "qt", 1.3)
    row("incoming binder call", "in", "raw, blocking", "blocking", None)
    row("outgoing binder call", "out", "raw client", "blocking", 1.3)


def announcements(table, rounds, driver):
    def again(name):
        return driver.call(name, "announce", APPS)

    def first(name):
        files.clean()
        return again(name)
    taken = in_turns(rounds, {
        "first": lambda: first(OURS), "again": lambda: again(OURS),
        "first floor": lambda: first("bench.files"), "again floor": lambda: again("bench.files")})
    for work, name in (("first", "announced over binder"), ("again", "the same again")):
        table.add(f"{name} ({driver.name})", taken[work]["wall"], "us", 1.5,
                  floor_name="raw, and the same files", floor=taken[work + " floor"]["wall"])


@contextmanager
def servers(driver):
    """The floors are registered with the runtime."""
    processes = [driver.serve(name) for name in SERVERS]
    try:
        for process in processes:
            wait_for(lambda process=process: process.output == "registered\n", process)
        yield
    finally:
        for process in processes:
            process.stop()
