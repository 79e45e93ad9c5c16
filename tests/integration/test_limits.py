"""Narrow quarters: what starts the daemon may have a strict umask, another language, an empty
environment, few file descriptors, little memory. The daemon does its main job as everywhere, and
where nothing is left, it says so, tears nothing, and goes on once there is something again.
"""

import os
import re
import resource
import signal
import subprocess
from contextlib import contextmanager
from itertools import count
from pathlib import Path

import pytest

from phone.daemon import LOGGING
from phone.phone import Phone, clean
from phone.runtime import DATA_ROOT
from phone.waiting import wait_for

from daemonsteps import (BINDER, DAEMON, LAUNCHER, claim_missing_settings_entries, forgive_deaths,
                         start_runtime, wait_until_announced)
from daemonsteps import SERVICE as SERVICE_CATEGORY
from hostfiles import (APPLICATIONS, ICONS, INCOMING, PARTNER_SPACE, SETTINGS, download, entry_path,
                       home_file, icon_path, read_entry, settings_path, traces)
from launches import WEATHER, started_intents
from parcels import ADD_HANDLER, ADD_LAUNCHER, COMPLETE, handler, launcher

PAPERTRAIL = "org.example.papertrail"
MAIN = entry_path(PAPERTRAIL, f"{PAPERTRAIL}.MainActivity")
SHARE = entry_path(PAPERTRAIL, f"{PAPERTRAIL}.ShareOneActivity", handler=True)
WEATHER_ENTRY = entry_path(WEATHER, f"{WEATHER}.MainActivity")
WRITTEN = (APPLICATIONS, ICONS, SETTINGS, PARTNER_SPACE, DATA_ROOT / "data/xrs-staging")

SERVICES = ("package", "activity", "storagestats", "alarm", "deviceidle", "umbra")

KEPT_VARIABLES = ("QT_MESSAGE_PATTERN", "QT_LOGGING_RULES", "QT_FORCE_STDERR_LOGGING")
MIB = 1 << 20
DEAD_OBJECT = -32


def is_sanitized():
    """Whether the daemon reserves terabytes of memory for its own observation."""
    return b"__asan_init" in (Path(os.environ["BRAMD_BUILD_DIR"]) / "sim/bramd").read_bytes()


needs_plain_memory = pytest.mark.skipif(
    is_sanitized(), reason="the address sanitizer's own memory is beyond every limit")
needs_plain_objects = pytest.mark.skipif(
    is_sanitized(), reason="the sanitizer opens a pipe to look at an object's type")


def read(process, name):
    return Path(f"/proc/{process.pid}/{name}").read_text(encoding="utf-8")


def environment(process):
    """The variables that it was started with, by name."""
    lines = read(process, "environ").split("\0")
    return dict(line.split("=", 1) for line in lines if line)


# Each limit: the words before the daemon's command line, and whether a process is limited so.

def strict_umask(_locales):
    """The daemon's own umask follows: what it makes is for users and for the runtime."""
    return (["/bin/sh", "-c", 'umask 0077 && exec "$0" "$@"'],
            lambda process: "\nUmask:\t0022\n" in read(process, "status"))


def turkish_locale(locales):
    """Where the capital of "i" is not "I"."""
    return (["/usr/bin/env", "-u", "LANGUAGE", "LC_ALL=tr_TR.UTF-8", f"LOCPATH={locales}"],
            lambda process: f"{locales}/tr_TR.UTF-8/LC_CTYPE" in read(process, "maps"))


def empty_environment(_locales):
    """Not even HOME or PATH, and the language is that of the locale "C". But the log goes where the
    test reads it."""
    kept = [f"{name}={LOGGING[name]}" for name in KEPT_VARIABLES]
    return (["/usr/bin/env", "-i", *kept],
            lambda process: environment(process).keys() == set(KEPT_VARIABLES))


def few_descriptors(_locales):
    return (["/usr/bin/prlimit", "--nofile=64"],
            lambda process: resource.prlimit(process.pid, resource.RLIMIT_NOFILE) == (64, 64))


def little_memory(_locales):
    """RLIMIT_DATA counts what only this process may write to, which is its share of the machine's
    memory. RLIMIT_AS would count the addresses, too, that malloc reserves for each thread (64 MiB)
    and hardly ever uses."""
    return (["/usr/bin/prlimit", f"--data={64 * MIB}"],
            lambda process:
            resource.prlimit(process.pid, resource.RLIMIT_DATA) == (64 * MIB, 64 * MIB))


LIMITS = [strict_umask, turkish_locale, empty_environment, few_descriptors,
          pytest.param(little_memory, marks=needs_plain_memory)]


def written():
    """Everything below the directories that the daemon writes to, and these: (type and mode, owner,
    group, content) by path."""
    found = {}
    for top in (DATA_ROOT, DATA_ROOT / "data", *filter(Path.exists, WRITTEN)):
        below = top.rglob("*") if top in WRITTEN else ()
        for path in (top, *below):
            status = path.stat()
            found[str(path)] = (oct(status.st_mode), status.st_uid, status.st_gid,
                                path.read_bytes() if path.is_file() else None)
    return found


def wait_until_settled(phone, since=0):
    """Until an announcement is complete and all that follows from it is done: whoever calls is
    answered afterwards."""
    wait_until_announced(phone, since)
    phone.bramd.call("getAndroidVersionData")


def do_main_job(phone, prefix=(), is_limited=lambda process: True):
    """Apps come, are used and go; returns everything that somebody could see of it."""
    seen = {}
    PARTNER_SPACE.mkdir()
    phone.start_daemon(prefix=prefix)
    assert is_limited(phone.daemon.process)
    start_runtime(phone)
    for method, name, file_name in (("installFile", "papertrail", "Kâğıt İzi.apk"),
                                    ("installPartnerSpaceFile", "weather", "INDIGO-1.apk")):
        since = phone.daemon.log.mark()
        assert phone.bramd.call(method, "s", str(download(name, file_name))) is True
        wait_until_settled(phone, since)
    seen["notice"] = phone.notifications.wait_for_notice()["icon"]
    seen["installed"] = written()
    seen["answers"] = [
        phone.bramd.call("getAndroidVersionData"), phone.bramd.call("getAppSize", "s", WEATHER),
        phone.bramd.call("getAppStartOnBootup", "s", WEATHER),
        phone.bramd.call("getAndroidAppDataUsage")]
    document = home_file("İstanbul ılık.pdf")
    phone.bramd.call("launchIntent", "ssssssa{sv}", "android.intent.action.VIEW",
                     f"file://{document}", "application/pdf", PAPERTRAIL,
                     f"{PAPERTRAIL}.ViewDocumentActivity", "", {})
    seen["launched"] = wait_for(lambda: started_intents(phone), "the launch")
    for argument in (str(MAIN), WEATHER):
        assert phone.bramd.call("removeFile", "s", argument) is True
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")
    since = phone.daemon.log.mark()
    phone.stop_runtime()
    forgive_deaths(phone, since)
    assert phone.stop_daemon() == 0
    claim_missing_settings_entries(phone)
    seen["removed"] = written()
    return seen


@pytest.fixture(name="unlimited", scope="module")
def unlimited_fixture():
    """What is seen of a daemon that has room."""
    try:
        with Phone() as phone:
            return do_main_job(phone)
    finally:
        clean()


@pytest.fixture(name="locales", scope="module")
def locales_fixture(tmp_path_factory):
    """A directory with locales that the machine need not have."""
    directory = tmp_path_factory.mktemp("locales")
    subprocess.run(["/usr/bin/localedef", "-i", "tr_TR", "-f", "UTF-8",
                    directory / "tr_TR.UTF-8"], check=True)
    return directory


@pytest.mark.parametrize("limit", LIMITS)
def test_the_main_job_is_done_as_without_limits(unlimited, locales, phone, limit):
    assert do_main_job(phone, *limit(locales)) == unlimited


@contextmanager
def no_free_descriptor(process):
    """Nothing can be opened, because the first free number is beyond the limit."""
    used = {int(path.name) for path in Path(f"/proc/{process.pid}/fd").iterdir()}
    free = next(number for number in count() if number not in used)
    before, hard_limit = resource.prlimit(process.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (free, hard_limit))
    yield
    resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (before, hard_limit))


@needs_plain_objects
def test_without_a_free_descriptor_nothing_is_torn(papertrail):
    wait_until_settled(papertrail)
    log, before = papertrail.daemon.log, written()
    with no_free_descriptor(papertrail.daemon.process):
        # Who calls cannot be found out, so that nobody is privileged.
        assert papertrail.bramd.call("installFile", "s", str(download("weather"))) is False
        log.expect(re.compile("Cannot read the device policy on app installation: .*"), "warning",
                   DAEMON)
        log.expect("APK installation prohibited", "critical", DAEMON)
        assert papertrail.bramd.call("getAndroidAppDataUsage") == 0
        log.expect("Could not determine android app data usage", "warning", DAEMON)
        papertrail.runtime.call_launcher(
            ADD_LAUNCHER, launcher(PAPERTRAIL, f"{PAPERTRAIL}.MainActivity", "Other name"))
        papertrail.runtime.call_launcher(
            ADD_HANDLER, handler(PAPERTRAIL, f"{PAPERTRAIL}.ShareOneActivity", "Other name",
                                 share_mime_types="text/x"))
        papertrail.runtime.call_launcher(COMPLETE)
        for path in (icon_path(MAIN), icon_path(SHARE)):
            log.expect(f'Unable to write icon: "{path}"', "warning", LAUNCHER)
        for path in (MAIN, SHARE):
            log.expect(f'Could not read: "{path}"', "warning", LAUNCHER)
            log.expect(f'Could not open "{path}" for writing', "warning", LAUNCHER)
        for directory in (APPLICATIONS, ICONS, SETTINGS):
            log.expect(f'Could not list: "{directory}/"', "warning", LAUNCHER)
        log.expect(f'Unable to open json file "{settings_path(MAIN)}" for writing', "warning",
                   LAUNCHER)
        log.expect("Unable to write sharing file", "warning", LAUNCHER)
        # The end of an announcement tries again, and looks for entries a second time.
        log.claim_all("Unable to write sharing file", "warning", LAUNCHER)
        log.claim_all(f'Could not list: "{APPLICATIONS}/"', "warning", LAUNCHER)
        assert written() == before

    announce_again(papertrail)
    assert written() == before
    assert papertrail.bramd.call("installFile", "s", str(download("weather"))) is True
    wait_for(WEATHER_ENTRY.exists, "the other app")


@needs_plain_objects
def test_a_runtime_that_comes_when_no_descriptor_is_free_is_met_when_it_comes_again(phone):
    phone.start_daemon()
    log = phone.daemon.log
    with no_free_descriptor(phone.daemon.process):
        phone.start_runtime()
        for service in SERVICES:
            log.expect(f"Could not get service manager for {service}", "critical", BINDER)
        log.expect('Cannot use binder device "/dev/marshhopper" "Too many open files"', "debug")
        phone.stop_runtime()
        log.expect('Umbra VM is "inactive" ( "dead" )')
    log.claim_all("Unable to find Umbra service manager for umbra.launcher", "warning",
                  SERVICE_CATEGORY)
    start_runtime(phone)


@needs_plain_memory
def test_without_memory_it_says_so_and_ends_and_the_next_one_goes_on(papertrail):
    wait_until_settled(papertrail)
    daemon, before = papertrail.daemon, written()
    large = launcher(PAPERTRAIL, f"{PAPERTRAIL}.MainActivity", "Large", icon=bytes(900 * 1000))
    limit = data_bytes(daemon.process)
    resource.prlimit(daemon.process.pid, resource.RLIMIT_DATA, (limit, limit))
    status, _reply = papertrail.runtime.call_launcher(ADD_LAUNCHER, large)
    assert status == DEAD_OBJECT
    assert daemon.process.wait_for_end() == -signal.SIGABRT
    assert "terminate called after throwing an instance of 'std::bad_alloc'" in daemon.log.other_lines
    assert written() == before

    papertrail.start_daemon()
    wait_until_settled(papertrail)
    del before[str(INCOMING / "papertrail.apk")]  # Nothing stays staged when a daemon starts.
    assert written() == before
    papertrail.runtime.call_launcher(ADD_LAUNCHER, large)
    assert read_entry(MAIN)["Name"] == "Large"
    announce_again(papertrail)
    assert written() == before


def announce_again(phone):
    since = phone.daemon.log.mark()
    phone.runtime.announce()
    wait_until_settled(phone, since)


def data_bytes(process):
    """What RLIMIT_DATA counts."""
    return int(re.search(r"^VmData:\s+(\d+) kB$", read(process, "status"), re.M)[1]) * 1024
