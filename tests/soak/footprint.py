"""What a process holds of the machine and of the binder device, seen from outside."""

import os
import re
from dataclasses import dataclass
from pathlib import Path

from phone.process import open_files
from phone.waiting import wait_for

MEBIBYTE = 1024

# The waits of an event loop, and the argument that says how long it waits at most.
_WAITS = {"x86_64": {7: 2, 271: 2}, "aarch64": {73: 2}}
_FOREVER = (0, 0xffffffff, 0xffffffffffffffff)


@dataclass(frozen=True)
class Figure:
    """A figure, and what it may have grown by at the end, at its highest, and in the second half of
    a long run, when nothing has to settle any more."""

    name: str
    title: str
    growth: int
    peak: int
    late: int | None = None


FIGURES = (
    Figure("descriptors", "file descriptors", 0, 16),
    Figure("threads", "threads", 0, 2),
    Figure("children", "child processes", 0, 2),
    # Of the four mebibytes that it shares with the driver, pages stay where messages have lain.
    Figure("rss", "resident memory, kB", 8 * MEBIBYTE, 24 * MEBIBYTE, 512),
    # The first hundred rounds add some 100 kB, the next 10; a leak of 3 kB in each would add 300.
    Figure("anonymous", "anonymous memory, kB", 3 * MEBIBYTE, 24 * MEBIBYTE, 256),
    Figure("timerfds", "timer descriptors", 0, 2),
    Figure("timers", "timers that run at rest", 0, 1),
    Figure("files", "binder: open files", 0, 1),
    Figure("nodes", "binder: own objects held by others", 0, 4),
    Figure("references", "binder: references", 0, 8),
    Figure("deaths", "binder: death notifications", 0, 8),
    Figure("buffers", "binder: messages not freed", 0, 8),
)


class Footprint:
    """The figures of the daemon of a phone: as they were, as they are, and the highest.

    `peaks` has other bounds for the highest of some figures, by name."""

    def __init__(self, phone, peaks=None):
        self._phone = phone
        self._peaks = {figure.name: figure.peak for figure in FIGURES} | (peaks or {})
        self._before = self._middle = None
        self._after = {}
        self._highest = {}

    def begin(self):
        """From here on nothing may grow."""
        self._after = self._before = self._highest = self._at_rest()

    def look(self):
        """Takes a figure of a busy moment into account."""
        self._note(self._figures())

    def halve(self):
        """Half of a run is over that is long enough to tell a leak from what settles."""
        self._middle = self._at_rest()
        self._note(self._middle)

    def end(self):
        self._after = self._at_rest()
        self._note(self._after)

    def excesses(self):
        """What is beyond its bound, as lines."""
        lines = []
        for figure in FIGURES:
            name, before = figure.name, self._before[figure.name]
            if self._after[name] > self._may_end(figure):
                lines.append(f"{figure.title}: {before} has become {self._after[name]}, "
                             f"beyond {self._may_end(figure)}")
            if self._highest[name] > before + self._peaks[name]:
                lines.append(f"{figure.title}: {before} was once {self._highest[name]}")
        return lines

    def table(self):
        lines = [f"{'':36}{'before':>9}{'middle':>9}{'after':>9}{'highest':>9}{'may end':>9}"
                 f"{'may reach':>11}"]
        for figure in FIGURES:
            name, before = figure.name, self._before[figure.name]
            middle = self._middle[name] if self._middle else "-"
            lines.append(f"{figure.title:36}{before:9}{middle:>9}{self._after[name]:9}"
                         f"{self._highest[name]:9}{self._may_end(figure):9}"
                         f"{before + self._peaks[name]:11}")
        return "\n".join(lines)

    def _may_end(self, figure):
        bounds = [self._before[figure.name] + figure.growth]
        if self._middle and figure.late is not None:
            bounds.append(self._middle[figure.name] + figure.late)
        return min(bounds)

    def _note(self, figures):
        self._highest = {name: max(count, self._highest[name]) for name, count in figures.items()}

    def _at_rest(self):
        """Once nothing is under way: no timer runs, no child, no message is held. The figures are
        read one after the other, and belong together when the next look finds the same."""
        def rest():
            figures = self._figures()
            busy = figures["timers"] or figures["children"] or figures["buffers"]
            return None if busy or figures != self._figures() else figures
        return wait_for(rest, lambda: f"the daemon's rest; it has {self._figures()}", 30)

    def _figures(self):
        pid = self._phone.daemon.process.pid
        process = Path(f"/proc/{pid}")
        status = dict(re.findall(r"^(\w+):\s+(\d+)", (process / "status").read_text(),
                                 re.MULTILINE))
        descriptors = open_files(pid)
        children = (process / "task" / str(pid) / "children").read_text().split()
        return {
            "descriptors": len(descriptors),
            "threads": int(status["Threads"]),
            "children": len(children),
            "rss": int(status["VmRSS"]),
            "anonymous": int(status["RssAnon"]),
            "timerfds": sum("timerfd" in target for target in descriptors),
            "timers": int(_has_time_limit(process)),
            **self._phone.router.books(pid),
        }


def _has_time_limit(process):
    """Whether the main thread does something, or waits with a time limit: then a timer runs."""
    words = (process / "syscall").read_text().split()
    position = _WAITS[os.uname().machine].get(int(words[0])) if words[0].isdigit() else None
    return position is None or int(words[1 + position], 16) not in _FOREVER
