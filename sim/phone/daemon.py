"""The daemon under test: the real program, with the simulated phone's binder driver.

With BRAMD_VALGRIND in the environment it runs in valgrind. What that finds stands in the daemon's
log, and makes the exit status VALGRIND_STATUS."""

import os
import signal
from pathlib import Path

from .buses import SYSTEM_SOCKET
from .daemonlog import MESSAGE_PATTERN, DaemonLog
from .process import Process
from .waiting import wait_for

SERVICE = "com.corvo.bramd"
OBJECT = "/com/corvo/bramd"
INTERFACE = "com.corvo.bramd"

START_TIMEOUT_S = 30
LOGGING = {
    "QT_MESSAGE_PATTERN": MESSAGE_PATTERN,
    "QT_LOGGING_TO_CONSOLE": "1",
    "QT_FORCE_STDERR_LOGGING": "1",
    "QT_LOGGING_RULES": "*.debug=true;qt.*.debug=false",
    "LANGUAGE": "en",
    "LC_ALL": "C.UTF-8",
}

# Regular expressions are not compiled to machine code, about which valgrind knows nothing. Blocks to
# which only pointers into the middle are left are no leaks: Qt keeps many objects so.
VALGRIND_STATUS = 99
VALGRIND = ["/usr/bin/env", "QT_ENABLE_REGEXP_JIT=0", "/usr/bin/valgrind", "--quiet",
            f"--error-exitcode={VALGRIND_STATUS}", "--leak-check=full",
            "--show-leak-kinds=definite", "--errors-for-leak-kinds=definite", "--num-callers=16",
            f"--suppressions={Path(__file__).with_name('valgrind.supp')}"]


class Daemon:
    """One run of bramd."""

    def __init__(self, build_directory, environment=None, prefix=()):
        """Starts it, through the command words of prefix if there are any."""
        program = Path(build_directory) / "sim" / "bramd"
        checker = VALGRIND if "BRAMD_VALGRIND" in os.environ else ()
        self.process = Process("bramd", [*prefix, *checker, program],
                               {**LOGGING, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={SYSTEM_SOCKET}",
                                **(environment or {})})
        self.log = DaemonLog(self.process.output_path)

    def wait_until_served(self, system_bus):
        """Waits until it has taken its name on the bus."""
        def served():
            if not self.process.running:
                raise AssertionError(f"ended with {self.process.exit_status}: {self.process}")
            return system_bus.has_owner(SERVICE)
        wait_for(served, lambda: f"{SERVICE} of {self.process}", START_TIMEOUT_S)

    def stop(self):
        return self.process.stop()

    def crash(self):
        self.process.kill(signal.SIGKILL)
        return self.process.wait()
