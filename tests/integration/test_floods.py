"""A runtime that calls, registers and answers as no honest one does: the daemon answers its callers
meanwhile, gives back all that it was sent, and works on."""

import itertools
import sys
import threading
from pathlib import Path

import pytest

from phone.waiting import wait_for

from daemonsteps import (BINDER, DIED, LAUNCHER, connected_line, forgive_deaths,
                         start_beside_runtime, start_runtime)
from hostfiles import download, entries
from parcels import ADD_LAUNCHER, launcher, string16

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "soak"))

from footprint import Footprint  # noqa: E402 pylint: disable=wrong-import-position
from soak import ENVIRONMENT  # noqa: E402 pylint: disable=wrong-import-position

WEATHER = "org.example.weather"
UNKNOWN = 99

FLOODS = (
    {"code": UNKNOWN, "data": b"x" * 4096},
    # A descriptor is held by the driver until the call is served: large calls keep these few.
    {"code": UNKNOWN, "data": b"x" * 16384, "objects": 8, "files": 8},
    {"code": ADD_LAUNCHER, "data": launcher(WEATHER, f"{WEATHER}.MainActivity", "Weather")},
    {"code": ADD_LAUNCHER, "data": string16("../x"), "objects": 1},
)

# The driver counts what lies in messages that the daemon has not come to yet.
PEAKS = {"references": 4096, "deaths": 64}

ANSWERS_AWAITED = 20
ANSWER_TIMEOUT_MS = 10000

# Answers that nobody has asked for, and one that does not fit into the memory that is shared.
SURPLUS = (("long", 100_000), ("long", 5 * 1024 * 1024), ("objects", 50), ("files", 3),
           ("short", 3))
NO_FILES = "a file descriptor for a receiver that accepts none"


# What the daemon says of all this.
NO_STATISTICS = "Error requesting package stats"
NO_WHITELIST = f'PowerSaveWhitelist check for "{WEATHER}" failed'
COMPLAINTS = (
    ('Dropping launcher with unusable name: "../x" ""', "warning", LAUNCHER),
    (DIED, "warning", BINDER),
    (NO_STATISTICS, "critical", BINDER),
    (NO_WHITELIST, "critical", BINDER),
    ("Couldn't read result", "critical", "com.corvo.bramd.parcel"),
)


class Attack(threading.Thread):
    """Repeats something in the background."""

    def __init__(self, strike):
        super().__init__(daemon=True)
        self._strike = strike
        self._enough = threading.Event()
        self._failure = None
        self.strikes = 0

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_exception):
        wait_for(lambda: self.strikes or self._failure, "the first strike", 30)
        self._enough.set()
        self.join()
        assert not self._failure, self._failure

    def run(self):
        try:
            while not self._enough.is_set():
                self._strike()
                self.strikes += 1
        except Exception as failure:  # pylint: disable=broad-except
            self._failure = failure


@pytest.fixture(name="footprint")
def footprint_fixture(phone):
    """Taken beside a runtime that has just started, and compared with what is left beside the next
    one, on which apps can be installed."""
    start_beside_runtime(phone, ENVIRONMENT)
    install(phone, "first.apk")
    restart(phone)
    footprint = Footprint(phone, PEAKS)
    footprint.begin()
    yield footprint
    restart(phone)
    footprint.end()
    # Only now is all served that waited.
    for text, level, category in COMPLAINTS:
        phone.daemon.log.claim_all(text, level, category)
    assert not footprint.excesses(), footprint.table()
    install(phone, "last.apk")


def install(phone, as_name):
    phone.notifications.forget()
    path = download("weather", as_name)
    assert phone.bramd.call("installFile", "s", str(path)) is True
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")


def restart(phone):
    phone.stop_runtime()
    forgive_deaths(phone)
    start_runtime(phone)


def check_that_callers_are_served(phone, footprint):
    for _ in range(ANSWERS_AWAITED):
        sdk, _release, _patch = phone.bramd.call("getAndroidVersionData",
                                                 timeout_ms=ANSWER_TIMEOUT_MS)
        assert sdk == phone.runtime.sdk
        footprint.look()


def test_calls_without_end(phone, footprint):
    for flood in FLOODS:
        with Attack(lambda flood=flood: phone.runtime.flood(count=200, **flood)):
            check_that_callers_are_served(phone, footprint)
    assert phone.daemon.log.count(f"Unknown binder call ( {UNKNOWN} )") > 100


def test_services_that_die_as_soon_as_they_are_known(phone, footprint):
    """The daemon holds on to each, and lets go of it."""
    phone.stop_runtime()
    forgive_deaths(phone)
    phone.start_runtime(hold=["package"])
    since = phone.daemon.log.mark()
    phone.runtime.mayflies("package", 1)  # in the place of the honest one
    with Attack(lambda: phone.runtime.mayflies("package", 50)):
        phone.runtime.release("package")
        check_that_callers_are_served(phone, footprint)
        wait_for(lambda: phone.daemon.log.count(connected_line("package"), since) >= 3,
                 "three that were known", 20)


def test_answers_that_nobody_asked_for(phone, footprint):
    numbers = itertools.count()
    asked = {
        "umbra": lambda: phone.bramd.call(
            "installFile", "s", str(download("starmap", f"{next(numbers)}.apk"))),
        "package": lambda: phone.bramd.call("removeFile", "s", "org.example.none"),
        "activity": lambda: phone.bramd.call("launchIntent", "ssssssa{sv}", *[""] * 6, {}),
        "storagestats": lambda: phone.bramd.call("getAppSize", "s", WEATHER),
        "deviceidle": lambda: phone.bramd.call("getAppStartOnBootup", "s", WEATHER),
    }
    phone.router.expect_misuse(NO_FILES)
    for service, ask in asked.items():
        for kind, value in SURPLUS:
            phone.runtime.fault(service, kind, value=value)
            phone.runtime.forget()
            ask()
            assert phone.runtime.transactions(service), f"{kind} answers of {service}"
            phone.runtime.fault(service, "none")
            footprint.look()
    assert phone.daemon.log.count(NO_STATISTICS)
    assert phone.daemon.log.count(NO_WHITELIST)
