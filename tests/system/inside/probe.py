"""Tries what a sandbox may forbid, and prints what came of it: "done", or the name of the error."""

import errno
import json
import os
import socket
import time


def create(path):
    with open(path, "x", encoding="ascii"):
        pass
    os.unlink(path)


def connect(family, kind):
    socket.socket(family, kind).close()


def open_device(name):
    os.close(os.open(f"/dev/{name}", os.O_RDWR))


ATTEMPTS = {
    "a local socket": lambda: connect(socket.AF_UNIX, socket.SOCK_STREAM),
    "an internet socket": lambda: connect(socket.AF_INET, socket.SOCK_STREAM),
    "a netlink socket": lambda: connect(socket.AF_NETLINK, socket.SOCK_RAW),
    "the runtime's device": lambda: open_device("marshhopper"),
    "another device": lambda: open_device("drivertest"),
    "a file in /etc": lambda: create("/etc/bramd-probe"),
    "a file in a home": lambda: create("/home/phone-user/bramd-probe"),
    "a unit of systemd's": lambda: create("/run/systemd/system/bramd-probe.service"),
    "a desktop entry": lambda: create("/usr/share/applications/bramd-probe"),
    "another time": lambda: time.clock_settime(time.CLOCK_REALTIME, 0),
    "another root": lambda: os.chroot("/"),
}


def outcome(attempt):
    try:
        attempt()
        return "done"
    except OSError as error:
        return errno.errorcode[error.errno]


print(json.dumps({name: outcome(attempt) for name, attempt in ATTEMPTS.items()}))
