"""The binder device "/dev/marshhopper", played by the userspace router."""

from pathlib import Path

from .process import Process
from .waiting import wait_for

DEVICE = Path("/dev/marshhopper")


class Router:
    """One run of bramd-sim-binder; while it runs, the device exists. Its options can make the
    driver's reads end early now and then, as the kernel's may (see its usage)."""

    def __init__(self, build_directory, options=()):
        program = Path(build_directory) / "sim" / "bramd-sim-binder"
        self.process = Process("router", [program, "--strict", *options, DEVICE])
        wait_for(lambda: "listening" in self.process.output or not self.process.running,
                 lambda: f"the binder device of {self.process}")
        assert self.process.running, self.process

    def misuse(self):
        """Complaints about users of the device that broke the driver's protocol."""
        return [line for line in self.process.output.splitlines() if "misuse" in line.lower()]

    def stop(self):
        """Returns the exit status, which is not 0 after any misuse."""
        status = self.process.stop()
        DEVICE.unlink(missing_ok=True)
        return status
