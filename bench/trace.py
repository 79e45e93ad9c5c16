"""The system calls of a process, as strace tells them."""

import re
import time
from dataclasses import dataclass

from phone.waiting import wait_for

QUIET_S = 2
QUIET_TIMEOUT_S = 60

_BEGUN = re.compile(r"^\d+ +(\w+)\((.*)")
_MAKES_FILES = re.compile(r"\bO_(CREAT|TMPFILE)\b")
_MAKERS = ("creat", "mknod", "mknodat", "link", "symlink", "symlinkat")


@dataclass
class Calls:
    """How many there were: of all, of those that wait for the disk, of those that make files."""

    total: int
    syncs: int
    created: int


class Trace:
    """The trace of one process and all its threads, from its start on."""

    def __init__(self, path):
        self._path = path
        # The tracer is a grandchild: the process is that of whoever starts the command.
        self.prefix = ["/usr/bin/strace", "-D", "-f", "-qqq", "-s", "8", "-o", path]

    def mark(self):
        """The present end, for the `since` of calls()."""
        return self._path.stat().st_size

    def calls(self, since):
        total = syncs = created = 0
        with open(self._path, encoding="utf-8", errors="replace") as trace:
            trace.seek(since)
            for line in trace:
                begun = _BEGUN.match(line)
                if not begun:
                    # A signal, the end of a call that another thread's interrupted, or of the one
                    # that was under way at the mark.
                    total += "resumed>" not in line
                    continue
                name, arguments = begun.groups()
                total += 1
                syncs += name in ("fdatasync", "fsync", "sync", "syncfs")
                created += name in _MAKERS or (name in ("open", "openat", "openat2")
                                               and bool(_MAKES_FILES.search(arguments)))
        return Calls(total, syncs, created)

    def wait_until_quiet(self):
        """Waits until nothing has happened for a while, and returns that end."""
        def quiet():
            end = self.mark()
            time.sleep(QUIET_S)
            return end == self.mark()
        wait_for(quiet, "a daemon that does nothing", QUIET_TIMEOUT_S)
        return self.mark()
