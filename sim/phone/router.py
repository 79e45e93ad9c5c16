"""The binder device "/dev/marshhopper", played by the userspace router."""

import re
import signal
from pathlib import Path

from .process import Process
from .waiting import wait_for

EXIT_MISUSE = 3

DEVICE = Path("/dev/marshhopper")

_BOOKS_LINE = re.compile(r"^bramd-sim-binder: pid (\d+): (nodes .*)$", re.MULTILINE)
_BOOKS_END = re.compile(r"^bramd-sim-binder: books told: \d+$", re.MULTILINE)


class Router:
    """One run of bramd-sim-binder; while it runs, the device exists. Its options can make the
    driver's reads end early now and then, as the kernel's may (see its usage)."""

    def __init__(self, build_directory, options=()):
        program = Path(build_directory) / "sim" / "bramd-sim-binder"
        self._expected = set()
        self.process = Process("router", [program, "--strict", *options, DEVICE])
        wait_for(lambda: "listening" in self.process.output or not self.process.running,
                 lambda: f"the binder device of {self.process}")
        assert self.process.running, self.process

    def expect_misuse(self, text):
        """Users of the device break the driver's protocol in this way, and the driver says so."""
        self._expected.add(text)

    def misuse(self):
        """Complaints about users of the device that broke the driver's protocol, and were not
        expected to."""
        lines = re.findall(r"^bramd-sim-binder: misuse: pid \d+: .*$", self.process.output,
                           re.MULTILINE)
        return [line for line in lines if line.split(": ", 3)[3] not in self._expected]

    @property
    def failed(self):
        """Whether it has ended otherwise than it should."""
        if self.process.exit_status == EXIT_MISUSE:
            return bool(self.misuse())
        return self.process.exit_status != 0

    def books(self, pid):
        """What the driver keeps for a process's open files together: "nodes" (its objects that
        others hold), "references" (what it holds of others), "deaths" (that it has asked to be told
        of), "buffers" (messages that it has not freed)."""
        told = len(_BOOKS_END.findall(self.process.output))
        self.process.signal(signal.SIGUSR1)
        wait_for(lambda: len(_BOOKS_END.findall(self.process.output)) > told, "the driver's books")
        page = _BOOKS_END.split(self.process.output)[told]
        sums = {"files": 0, "nodes": 0, "references": 0, "deaths": 0, "buffers": 0}
        for owner, counts in _BOOKS_LINE.findall(page):
            if int(owner) == pid:
                sums["files"] += 1
                for name, count in re.findall(r"(\w+) (\d+)", counts):
                    sums[name] += int(count)
        return sums

    def stop(self):
        """Returns the exit status, which is not 0 after any misuse."""
        status = self.process.stop()
        DEVICE.unlink(missing_ok=True)
        return status
