"""Binder calls into the daemon and out of it, and announcements from call to file.

Everybody goes through the same driver. Here that is the simulated one, a socket to another process,
which takes far longer than a kernel's: the ratios are then kinder than on a device. The programs whose
names end in "_kernel" are the same for a kernel's driver."""

from contextlib import contextmanager

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
MAX_GROWTH_KB = 2000
OURS = "umbra.launcher"
SERVERS = {"bench.blocking": "blocking", "bench.qt": "qt", "bench.files": "files"}
# Only what wait_until_connected() waits for.
QUIET = {"QT_LOGGING_RULES": "*.debug=false;com.corvo.bramd.binder.debug=true"}


def measure(table, rounds):
    try:
        with Phone() as phone, servers(phone):
            memory(table, phone)
            small_calls(table, rounds)
            announcements(table, rounds)
    finally:
        clean()


def memory(table, phone):
    """What is kept of announcements once their files are written."""
    files.clean()
    before = status(phone.daemon.process)["RssAnon"]
    announce(OURS, MANY_APPS)
    table.add(f"memory added by {MANY_APPS} launchers",
              status(phone.daemon.process)["RssAnon"] - before, "kB", MAX_GROWTH_KB)


def small_calls(table, rounds):
    taken = in_turns(rounds, {
        "in": lambda: cost("caller_binder", OURS, "small", CALLS),
        "qt": lambda: cost("caller_binder", "bench.qt", "small", CALLS),
        "blocking": lambda: cost("caller_binder", "bench.blocking", "small", CALLS),
        "out": lambda: cost("ours_binderclient", "bench.blocking", CALLS)})

    def row(name, of, floor_name, floor, target):
        table.add(f"{name} (simulated driver)", taken[of]["wall"], "us", target,
                  floor_name=floor_name, floor=taken[floor]["wall"])
    row("incoming binder call", "in", "raw, in a Qt loop", "qt", 1.3)
    row("incoming binder call", "in", "raw, blocking", "blocking", None)
    row("outgoing binder call", "out", "raw client", "blocking", 1.3)


def announcements(table, rounds):
    def first(name):
        files.clean()
        return announce(name, APPS)
    taken = in_turns(rounds, {
        "first": lambda: first(OURS), "again": lambda: announce(OURS, APPS),
        "first floor": lambda: first("bench.files"),
        "again floor": lambda: announce("bench.files", APPS)})
    for work, name in (("first", "announced over binder"), ("again", "the same again")):
        table.add(f"{name} (simulated driver)", taken[work]["wall"], "us", 1.5,
                  floor_name="raw, and the same files", floor=taken[work + " floor"]["wall"])


def announce(name, apps):
    return cost("caller_binder", name, "announce", apps)


@contextmanager
def servers(phone):
    """The daemon is connected to the runtime, and the floors are registered with it."""
    phone.start_runtime()
    phone.start_daemon(QUIET)
    wait_until_connected(phone)
    processes = [Process(name, [program("floor_binderserver"), name, mode])
                 for name, mode in SERVERS.items()]
    try:
        for process in processes:
            wait_for(lambda process=process: process.output == "registered\n", process)
        yield
    finally:
        for process in processes:
            process.stop()
