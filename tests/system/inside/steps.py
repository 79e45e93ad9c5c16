"""Steps that several tests take on the phone."""

import shutil

from hostfiles import APKS, APPLICATIONS, DOWNLOADS, SETTINGS, traces
from phone.waiting import wait_for

from realphone import PATIENCE_S, USER, as_user

ANNOUNCED = "Launchers complete. Removing orphans"
CONNECTED = [f"Connected to Umbra Service {name}"
             for name in ("package", "activity", "alarm", "umbra")]


def download(name, directory=DOWNLOADS):
    """Puts one of the build's APKs into a directory, as the user's file."""
    target = directory / f"{name}.apk"
    shutil.copyfile(APKS / f"{name}.apk", target)
    shutil.chown(target, USER, USER)
    return target


def call(method, argument, user=USER, group=None):
    """Calls com.corvo.bramd as that user's programs do, those of the group if one is given; returns
    the finished busctl."""
    words = ["busctl", "--system", "--timeout=60", "call", "com.corvo.bramd", "/com/corvo/bramd",
             "com.corvo.bramd", method, "s", argument]
    return as_user(user, *words, group=group, check=False)


def request(method, argument, user=USER, group=None):
    """The boolean that the daemon answers."""
    done = call(method, argument, user, group)
    assert done.stdout in ("b true\n", "b false\n"), done.stdout + done.stderr
    return done.stdout == "b true\n"


def install(phone, name, directory=DOWNLOADS):
    """Installs an APK as the user, and waits until the user is told."""
    told = len(phone.notifications.notices())
    assert request("installFile", download(name, directory))
    return phone.notifications.wait_for_notice(told + 1, timeout=PATIENCE_S)


def wait_for_entries(count):
    """Until an app's desktop entries and its settings entry are complete, not just being written."""
    wait_for(lambda: len(list(APPLICATIONS.glob("bramd_*.desktop"))) == count
             and len(list(SETTINGS.glob("bramd_*.json"))) == 1, lambda: f"the rest of {traces()}",
             PATIENCE_S)


def wait_until_connected(phone, since):
    """Until the daemon holds the runtime's services, and knows all that is installed."""
    for line in [*CONNECTED, ANNOUNCED]:
        wait_for(lambda text=line: phone.daemon.log.count(text, since),
                 lambda text=line: f"{text}; logged was:\n{phone.daemon.log.tail(since)}", PATIENCE_S)


def start_runtime(phone):
    since = phone.daemon.log.mark()
    phone.start_runtime()
    wait_until_connected(phone, since)
