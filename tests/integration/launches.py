"""What the runtime was asked to start, and what it needs for that."""

import pytest

from phone.namespace import USER

from daemonsteps import BINDER, start_beside_runtime, wait_until_announced
from hostfiles import download

WEATHER = "org.example.weather"

EVERY_LEVEL = [pytest.param(sdk, marks=pytest.mark.phone(sdk=sdk)) for sdk in (27, 28, 29, 30)]
UNKNOWN_LEVEL = 30  # the daemon takes the codes of level 29

START_ACTIVITY = {27: 3, 28: 6, 29: 7, 30: 7}
LAUNCH_PACKAGE = 1
HAS_WINDOW = 103
CURRENT_USER = -2

HOME_VOLUME = "/storage/8ff87de4-0b37-4799-b09a-82773e869e07"

# Files of the host, and the addresses under which the runtime has them.
ADDRESSES = {
    f"/home/{USER}/Documents/a.pdf": f"file://{HOME_VOLUME}/Documents/a.pdf",
    f"/home/{USER}/android_storage/Download/b.png": "file:///storage/emulated/0/Download/b.png",
    f"/home/{USER}/android_storage/x/android_storage/y":
        "file:///storage/emulated/0/x/storage/emulated/0/y",
    f"file:///home/{USER}/c.txt": f"file://{HOME_VOLUME}/c.txt",
    f"/run/media/{USER}/sdcard/d.mp3": "file:///storage/sdcard/d.mp3",
    f"file:/run/media/{USER}/card/f": "file:///storage/card/f",
    "/tmp/e": "file:///tmp/e",
    f"/home/{USER}": f"file://{HOME_VOLUME}",
    "/home": f"file://{HOME_VOLUME}/home",
    "/homework/x": f"file://{HOME_VOLUME}/homework/x",
    "https://example.org/a?b=c": "https://example.org/a?b=c",
}


def start_with_weather(phone):
    """Daemon and runtime are up, and the app is installed; nothing else is recorded."""
    start_beside_runtime(phone)
    since = phone.daemon.log.mark()
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
    phone.notifications.wait_for_notice()
    wait_until_announced(phone, since)
    phone.notifications.forget()
    phone.runtime.forget()


def started_intents(phone):
    """Every Intent that the activity manager was asked to start, without what is unset."""
    found = phone.runtime.transactions("activity", START_ACTIVITY[phone.runtime.sdk])
    assert not [record for record in found if "problem" in record], found
    return [without_unset(record["decoded"]["intent"]) for record in found]


def check_level_complaints(phone, count):
    """At a level whose codes are not known, each call that needs one is complained of."""
    complaints = phone.daemon.log.claim_all("Unsupported android SDK version!", "critical", BINDER)
    assert complaints == (count if phone.runtime.sdk == UNKNOWN_LEVEL else 0)


def without_unset(intent):
    assert intent["contentUserHint"] == CURRENT_USER
    return {key: value for key, value in intent.items()
            if value not in (None, [], {}) and key != "contentUserHint"
            and not (key == "flags" and value == 0)}


def looks(phone):
    """The packages whose windows the compositor was asked for, in order."""
    return [record["decoded"]["packageName"]
            for record in phone.runtime.transactions("SurfaceFlinger", HAS_WINDOW)]


def launched_packages(phone):
    return [record["decoded"]["packageName"]
            for record in phone.runtime.transactions("umbra", LAUNCH_PACKAGE)]
