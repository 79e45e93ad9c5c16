"""The listener of watchedcalls.py: has single system calls of a process fail, or be its last."""

import fcntl
import os
import select
import signal
import socket
import stat
import struct
import sys
import threading
from dataclasses import dataclass
from errno import EACCES, EIO, ENOSPC, EROFS
from pathlib import Path

import watchedcalls

PROGRAM = Path(watchedcalls.__file__).resolve()
SOCKET = Path("/run/watchedcalls")

# <linux/seccomp.h>: struct seccomp_notif and seccomp_notif_resp, and the calls that move them.
NOTIFICATION, RESPONSE = struct.Struct("<QIIiIQ6Q"), struct.Struct("<QqiI")
RECEIVE, SEND = 0xc0502100, 0xc0182101
GO_ON = 1

# What to answer in place of an error number: the process is killed before it makes the call.
KILL = "SIGKILL"

ANY = (ENOSPC, EROFS, EACCES, EIO)
UNWRITABLE, UNREADABLE = (EROFS, EACCES, EIO), (EACCES, EIO)
NO_ROOM, BROKEN = (ENOSPC, EIO), (EIO,)

# By name: on what the call works (the number of the argument that is a path, or a descriptor), and
# how a disk can make it fail.
BY_PATH = {
    "open": (0, None), "openat": (1, None), "openat2": (1, None), "creat": (0, ANY),
    "mkdir": (0, ANY), "mkdirat": (1, ANY), "rename": (0, ANY), "renameat": (1, ANY),
    "renameat2": (1, ANY), "link": (1, ANY), "linkat": (3, ANY), "symlink": (1, ANY),
    "symlinkat": (2, ANY), "unlink": (0, UNWRITABLE), "unlinkat": (1, UNWRITABLE),
    "rmdir": (0, UNWRITABLE), "chmod": (0, UNWRITABLE), "fchmodat": (1, UNWRITABLE),
    "fchmodat2": (1, UNWRITABLE), "chown": (0, UNWRITABLE), "lchown": (0, UNWRITABLE),
    "fchownat": (1, UNWRITABLE), "truncate": (0, ANY), "utimensat": (1, UNWRITABLE),
    "stat": (0, UNREADABLE), "lstat": (0, UNREADABLE), "newfstatat": (1, UNREADABLE),
    "statx": (1, UNREADABLE), "statfs": (0, UNREADABLE), "access": (0, UNREADABLE),
    "faccessat": (1, UNREADABLE), "faccessat2": (1, UNREADABLE), "readlink": (0, UNREADABLE),
    "readlinkat": (1, UNREADABLE)}
BY_DESCRIPTOR = {
    "fchmod": UNWRITABLE, "fchown": UNWRITABLE, "ftruncate": NO_ROOM, "fallocate": NO_ROOM,
    "read": BROKEN, "pread64": BROKEN, "readv": BROKEN, "write": NO_ROOM, "pwrite64": NO_ROOM,
    "writev": NO_ROOM, "lseek": BROKEN, "fsync": NO_ROOM, "fdatasync": NO_ROOM,
    "copy_file_range": NO_ROOM, "sendfile": NO_ROOM, "getdents64": BROKEN, "fstat": BROKEN,
    "fstatfs": BROKEN}


@dataclass(frozen=True)
class Call:
    """A system call that is about to be made, on which file, and the errors it may meet."""

    name: str
    path: str
    errors: tuple
    flags: int = 0  # of one that opens

    def __str__(self):
        return f"{self.name} {self.path}"


class WatchedProcess:
    """Decides about the system calls of the processes that are started through `prefix`.

    While a fault is armed, it is asked about every call of the process's first thread that works
    on a file or directory (not on its standard output), in order: fault(number, call), with the
    number counted from 0, returns an error number, KILL or None. All other calls, those of child
    processes among them, just happen.

    `calls` are those since arm(), `faults` those of them that failed or were not made any more.
    """

    def __init__(self):
        self.prefix = (sys.executable, PROGRAM, SOCKET)
        self.calls, self.faults = [], []
        self._fault = None
        self._socket = socket.socket(socket.AF_UNIX)
        SOCKET.unlink(missing_ok=True)
        self._socket.bind(str(SOCKET))
        self._socket.listen()
        threading.Thread(target=self._accept, daemon=True).start()

    def arm(self, fault):
        self.calls, self.faults = [], []
        self._fault = fault

    def disarm(self):
        self._fault = None

    def close(self):
        self._socket.shutdown(socket.SHUT_RDWR)
        self._socket.close()

    def _accept(self):
        while True:
            try:
                connection, _address = self._socket.accept()
            except OSError:
                return
            with connection:
                credentials = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
                _message, descriptors, _flags, _sender = socket.recv_fds(connection, 16, 1)
            threading.Thread(target=self._listen, daemon=True,
                             args=(struct.unpack("3i", credentials)[0], *descriptors)).start()

    def _listen(self, watched, listener):
        names = watchedcalls.numbers()
        poll = select.poll()
        poll.register(listener, select.POLLIN)
        while poll.poll()[0][1] & select.POLLIN:  # else nobody is left to be watched
            notification = bytearray(NOTIFICATION.size)
            try:
                fcntl.ioctl(listener, RECEIVE, notification)
            except FileNotFoundError:
                continue  # It was killed meanwhile.
            identity, process, _flags, number, _architecture, _instruction, *arguments = \
                NOTIFICATION.unpack(notification)
            answer = None
            if process == watched and self._fault:
                answer = self._decide(process, names[number], arguments)
            if answer == KILL:
                os.kill(process, signal.SIGKILL)
                continue
            response = RESPONSE.pack(identity, 0, -answer if answer else 0,
                                     0 if answer else GO_ON)
            try:
                fcntl.ioctl(listener, SEND, response)
            except FileNotFoundError:
                pass
        os.close(listener)

    def _decide(self, process, name, arguments):
        try:
            call = _call(process, name, arguments)
        except OSError:
            return None
        fault = self._fault
        if not call or not fault:
            return None
        self.calls.append(call)
        answer = fault(len(self.calls) - 1, call)
        if answer:
            self.faults.append(call)
        return answer


def _call(process, name, arguments):
    """None when the call is none of a file's."""
    if name in BY_PATH:
        argument, errors = BY_PATH[name]
        path = _text(process, arguments[argument])
        if not path:
            return None  # a descriptor's state
        if errors is None:
            flags = arguments[argument + 1]
            errors = ANY if flags & (os.O_WRONLY | os.O_RDWR | os.O_CREAT) else UNREADABLE
            return Call(name, path, errors, flags)
        return Call(name, path, errors)
    descriptor = arguments[0]
    link = f"/proc/{process}/fd/{descriptor}"
    mode = os.stat(link).st_mode
    if descriptor <= 2 or not (stat.S_ISREG(mode) or stat.S_ISDIR(mode)):
        return None
    return Call(name, os.readlink(link), BY_DESCRIPTOR[name])


def _text(process, address):
    if not address:
        return ""
    with open(f"/proc/{process}/mem", "rb", buffering=0) as memory:
        memory.seek(address)
        text = memory.read(4096 - address % 4096)
        if b"\0" not in text:
            text += memory.read(4096)
    return os.fsdecode(text.split(b"\0")[0])
