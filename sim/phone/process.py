"""One process of the phone, its output and its end."""

import os
import signal
import subprocess
from pathlib import Path

from .waiting import wait_for

LOGS = Path("/run/phone/logs")
STOP_TIMEOUT_S = 10


class Process:
    """A process whose standard output and error go to a file of their own."""

    def __init__(self, name, command, environment=None, stdin=subprocess.DEVNULL):
        LOGS.mkdir(parents=True, exist_ok=True)
        self.name = name
        self.was_asked_to_end = False
        self.end_expected = False
        self.output_path = _new_log(name)
        with open(self.output_path, "wb") as output:
            self._popen = self._start([os.fspath(word) for word in command],
                                      {**os.environ, **(environment or {})}, stdin, output)

    def _start(self, command, environment, stdin, output):
        return subprocess.Popen(command, stdin=stdin, stdout=output, stderr=output,
                                env=environment, start_new_session=True)

    @property
    def pid(self):
        return self._popen.pid

    @property
    def exit_status(self):
        """None while it runs; as subprocess has it, -N when signal N ended it."""
        return self._popen.poll()

    @property
    def running(self):
        return self.exit_status is None

    @property
    def output(self):
        return self.output_path.read_text(encoding="utf-8", errors="replace")

    def wait(self, timeout=STOP_TIMEOUT_S):
        """Waits for its end and returns the exit status."""
        wait_for(lambda: not self.running, lambda: f"the end of {self}", timeout)
        return self.exit_status

    def wait_for_end(self, timeout=STOP_TIMEOUT_S):
        """Like wait(), for a process that is meant to end by itself."""
        self.end_expected = True
        return self.wait(timeout)

    def kill(self, number=signal.SIGKILL):
        """Sends a signal that is meant to end it."""
        if self.running:
            self.end_expected = True
            self._popen.send_signal(number)

    def signal(self, number):
        """Sends a signal that it lives on after."""
        self._popen.send_signal(number)

    def pause(self):
        """It hangs from now on."""
        self._popen.send_signal(signal.SIGSTOP)

    def go_on(self):
        self._popen.send_signal(signal.SIGCONT)

    def stop(self):
        """Asks it to end, insists after a while, and returns the exit status."""
        if self.running:
            self.was_asked_to_end = True
        self.kill(signal.SIGTERM)
        try:
            return self._popen.wait(STOP_TIMEOUT_S)
        except subprocess.TimeoutExpired:
            self.kill()
            return self._popen.wait()

    def __str__(self):
        return f"{self.name} (process {self.pid}), which printed:\n{self.output[-4000:]}"


def open_files(pid):
    """What a process's descriptors refer to, but for those that it closes just now."""
    files = []
    for path in Path(f"/proc/{pid}/fd").iterdir():
        try:
            files.append(os.readlink(path))
        except FileNotFoundError:
            pass
    return files


def _new_log(name):
    number = 1
    while (LOGS / f"{name}-{number}.log").exists():
        number += 1
    return LOGS / f"{name}-{number}.log"
