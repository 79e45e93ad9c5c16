"""What the runtime was asked to start, and what it needs for that."""

from phone.waiting import wait_for

from daemonsteps import start_beside_runtime
from hostfiles import download, entries

WEATHER = "org.example.weather"

SDK_LEVELS = (27, 28, 29)
START_ACTIVITY = {27: 3, 28: 6, 29: 7}
LAUNCH_PACKAGE = 1
HAS_WINDOW = 103
CURRENT_USER = -2



def start_with_weather(phone):
    """Daemon and runtime are up, and the app is installed; nothing else is recorded."""
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    phone.notifications.forget()
    phone.runtime.forget()


def started_intents(phone):
    """Every Intent that the activity manager was asked to start, without what is unset."""
    found = phone.runtime.transactions("activity", START_ACTIVITY[phone.runtime.sdk])
    assert not [record for record in found if "problem" in record], found
    return [without_unset(record["decoded"]["intent"]) for record in found]


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
