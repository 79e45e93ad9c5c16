"""The host's clock is set while the daemon runs: nobody notices.

On a phone that is every start: its clock knows the time only once there is a network."""

import os
import struct
import subprocess
from datetime import datetime, timezone
from pathlib import Path

import pytest

from phone.waiting import wait_for

from daemonsteps import (ANNOUNCED, claim_missing_settings_entries, connected_line, forgive_deaths,
                         start_runtime, wait_until_announced, wait_until_connected)
from hostfiles import INCOMING, download, entries, traces

PRELOADED = Path(os.environ["BRAMD_BUILD_DIR"]) / "tests/integration/clockjump.so"
DECADE_S = 10 * 365 * 24 * 3600


class Clock:
    """The time of day of programs that are started in `environment`."""

    FILE = Path("/run/clockjump")

    def __init__(self):
        self.set(0)
        # The sanitizers would have their library be the first one.
        options = filter(None, [os.environ.get("ASAN_OPTIONS"), "verify_asan_link_order=0"])
        self.environment = {"LD_PRELOAD": str(PRELOADED), "CLOCKJUMP_FILE": str(self.FILE),
                            "ASAN_OPTIONS": ":".join(options)}

    def set(self, seconds):
        """From now on the clock is so much ahead of the real one."""
        with open(self.FILE, "r+b" if self.FILE.exists() else "wb", buffering=0) as file:
            file.write(struct.pack("q", seconds))


@pytest.fixture(name="clock")
def clock_fixture():
    return Clock()


@pytest.mark.parametrize("years", [0, 10, -30])
def test_the_clock_jumps(clock, years):
    clock.set(years * DECADE_S // 10)
    now = subprocess.run(["/bin/date", "+%Y"], check=True, capture_output=True, text=True,
                         env={**os.environ, **clock.environment}).stdout
    expected = datetime.now(timezone.utc).year + years
    assert abs(int(now) - expected) <= 1


@pytest.mark.parametrize("jump", [DECADE_S, -3 * DECADE_S], ids=["forwards", "back"])
def test_a_jump_does_not_keep_anybody_waiting(phone, clock, jump):
    phone.start_daemon(clock.environment)
    assert str(PRELOADED) in Path(f"/proc/{phone.daemon.process.pid}/maps").read_text("ascii")

    # While the daemon looks, again and again, for a service of a runtime that starts:
    phone.start_runtime(hold=["package"])
    phone.daemon.log.expect(connected_line("activity"), timeout=20)
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
    clock.set(jump)
    phone.runtime.release("package")
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry", 20)

    # While it knows them, and while it waits for the next runtime:
    clock.set(0)
    assert phone.bramd.call("getAppSize", "s", "org.example.weather")[0] > 0
    since = phone.daemon.log.mark()
    phone.stop_runtime()
    forgive_deaths(phone, since)
    clock.set(jump)
    start_runtime(phone)
    since = phone.daemon.log.mark()
    assert phone.bramd.call("removeFile", "s", "org.example.weather") is True
    wait_until_announced(phone, since)
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")
    claim_missing_settings_entries(phone)


@pytest.mark.parametrize("age", [-DECADE_S, DECADE_S], ids=["of the future", "of the past"])
def test_times_of_files_mean_nothing(phone, age):
    """Files that were written when the clock was wrong."""
    phone.start_daemon()
    start_runtime(phone)
    since = phone.daemon.log.mark()
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
    wait_until_announced(phone, since)
    files = [Path(path) for path in traces()] + [INCOMING / "weather.apk"]
    contents = [path.read_bytes() for path in files]
    for path in files:
        then = path.stat().st_mtime - age
        os.utime(path, (then, then))
    times = [path.stat().st_mtime for path in files]

    phone.runtime.announce()
    wait_for(lambda: phone.daemon.log.count(ANNOUNCED, since) == 2, "another announcement")
    phone.bramd.introspection()
    assert [path.stat().st_mtime for path in files] == times

    phone.stop_daemon()
    phone.start_daemon()
    wait_until_connected(phone)
    wait_until_announced(phone)
    assert not files.pop().exists()
    assert [path.read_bytes() for path in files] == contents[:-1]
