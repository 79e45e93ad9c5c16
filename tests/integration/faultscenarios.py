"""An announcement, an install and a removal as the disk sees them: each can be begun anew, done,
and compared, file by file, with what an undisturbed one leaves."""

import json
import stat

from gi.repository import GLib

from phone.runtime import Refused
from phone.waiting import wait_for

from daemonsteps import ANNOUNCED
from hostfiles import (APPLICATIONS, ICONS, INCOMING, PARTNER_SPACE, SETTINGS, SHARING, download,
                       entry_path, icon_path, settings_path)
from parcels import (ADD_HANDLER, ADD_LAUNCHER, COMPLETE, REMOVE_PACKAGE, handler, launcher,
                     string16)

DIRECTORIES = (APPLICATIONS, ICONS, SETTINGS, INCOMING, PARTNER_SPACE)
DATABASE = "mimeinfo.cache"  # of the program that refreshes it
NO_TARGETS = (b"", b"{\n}\n")


def files():
    """Every file that the daemon writes: its mode and content by its path."""
    found = {}
    for directory in DIRECTORIES:
        for path in directory.iterdir() if directory.exists() else ():
            if DATABASE not in path.name:
                found[str(path)] = (stat.S_IMODE(path.stat().st_mode), path.read_bytes())
    return found


def differences(found, expected):
    """What sets two results of files() apart, as lines."""
    lines = [f"{path} is missing" for path in expected if path not in found]
    lines += [f"{path} is too much" for path in found if path not in expected]
    return lines + [f"{path} is {found[path]} instead of {expected[path]}" for path in found
                    if path in expected and not _are_same(path, found[path], expected[path])]


def _are_same(path, one, other):
    # A daemon that was started anew has written no targets, and not that there are none any more.
    return one == other or (path == str(SHARING) and one[0] == other[0]
                            and one[1] in NO_TARGETS and other[1] in NO_TARGETS)


def torn(found, *wholes):
    """Complaints about files that are not whole, as lines; wholes are results of files(). Files
    with other names are copies that nobody had the time to rename; they are for differences()."""
    return [f"{path} is torn: {content}" for path, (_mode, content) in found.items()
            if any(path in whole for whole in wholes) and not _is_whole(path, content, wholes)]


def _is_whole(path, content, wholes):
    if any(whole[path][1] == content for whole in wholes if path in whole):
        return True
    if path.endswith(".desktop"):
        lines = content.split(b"\n")
        # Keys are sorted, so that it is the last that names the package.
        return lines[0] == b"[Desktop Entry]" and lines[-1] == b"" and (
            lines[-2].startswith(b"X-bramd-packageName="))
    return path.endswith(".json") and _is_json(content)


def _is_json(content):
    try:
        return bool(json.loads(content))
    except ValueError:
        return False


class Scenario:
    """One of the daemon's tasks. prepare() makes the state before it from any other; act() does it,
    and bears with a daemon that fails or is killed; repair() is what the runtime announces and the
    user asks for next, after which nothing may tell that anything had gone wrong."""

    # Directories with which other tasks do the same.
    TRIED_ELSEWHERE = ()

    def __init__(self, phone):
        self.phone = phone

    def call_launcher(self, code, data=b""):
        try:
            self.phone.runtime.call_launcher(code, data)
        except Refused:
            assert not self.phone.daemon.process.running

    def ask(self, method, argument):
        """Whether the daemon has accepted it."""
        try:
            return self.phone.bramd.call(method, "s", str(argument))
        except GLib.Error:
            self.phone.daemon.process.wait()
            return False

    def wait_until_announced(self, since):
        """Until the daemon knows all apps and has done what follows, or has ended."""
        daemon = self.phone.daemon
        wait_for(lambda: daemon.log.count(ANNOUNCED, since) or not daemon.process.running,
                 lambda: f"a complete announcement; logged was:\n{daemon.log.tail(since)}", 20)
        try:
            self.phone.bramd.introspection()  # for which it touches no file
        except GLib.Error:
            daemon.process.wait()


class Announcement(Scenario):
    """Of a new app, a changed app and a changed share target; and no more of a fourth app."""

    ORPHAN = entry_path("gone.app", "gone.Main")

    def prepare(self):
        for package in ("new.app", "changed.app", "share.app"):
            self.call_launcher(REMOVE_PACKAGE, string16(package))
        self._announce_changed_apps("Old", "1", b"old" * 1000)
        self.call_launcher(COMPLETE)
        self.ORPHAN.write_text("[Desktop Entry]\nX-bramd-packageName=gone.app\n", "ascii")
        icon_path(self.ORPHAN).write_bytes(b"gone")
        settings_path(self.ORPHAN).write_text('{"gone": 1}', "ascii")

    def act(self):
        self._announce_changed_apps("New", "2", b"new" * 1000)
        self.call_launcher(ADD_LAUNCHER, launcher("new.app", "new.Main", "Fresh", "1", b"fresh"))
        self.call_launcher(COMPLETE)

    def repair(self):
        self.act()

    def _announce_changed_apps(self, name, version, icon):
        self.call_launcher(ADD_LAUNCHER, launcher("changed.app", "changed.Main", name, version,
                                                  icon))
        self.call_launcher(ADD_HANDLER, handler("share.app", "share.To", "Share", name,
                                                share_mime_types="text/plain"))


class Installation(Scenario):
    """Of an app of the partner space."""

    PACKAGE = "org.example.metronome"
    TRIED_ELSEWHERE = (APPLICATIONS, ICONS, SETTINGS)

    def __init__(self, phone):
        super().__init__(phone)
        PARTNER_SPACE.mkdir(exist_ok=True)
        self._apk = download("metronome-1", f"{self.PACKAGE}.apk")

    def prepare(self):
        if self.PACKAGE in [app["package"] for app in self.phone.runtime.apps()]:
            self._ask_and_wait("removeFile", self.PACKAGE)
        for directory in (INCOMING, PARTNER_SPACE):
            (directory / self._apk.name).unlink(missing_ok=True)

    def act(self):
        self._ask_and_wait("installPartnerSpaceFile", self._apk)

    def repair(self):
        self.act()
        since = self.phone.daemon.log.mark()
        self.phone.runtime.announce()
        self.wait_until_announced(since)

    def _ask_and_wait(self, method, argument):
        since = self.phone.daemon.log.mark()
        if self.ask(method, argument):
            self.wait_until_announced(since)


class Removal(Scenario):
    """Of an app with files of every kind, the only one that takes what is shared."""

    PACKAGE = "removed.app"

    def prepare(self):
        self.call_launcher(ADD_LAUNCHER, launcher(self.PACKAGE, "removed.Main", "Removed"))
        self.call_launcher(ADD_HANDLER, handler(self.PACKAGE, "removed.To", "Share",
                                                share_mime_types="text/plain"))
        self.call_launcher(ADD_LAUNCHER, launcher("other.app", "other.Main", "Other"))
        self.call_launcher(COMPLETE)

    def act(self):
        self.ask("removeFile", entry_path(self.PACKAGE, "removed.Main"))
        self.call_launcher(REMOVE_PACKAGE, string16(self.PACKAGE))
        self.call_launcher(COMPLETE)

    def repair(self):
        self.call_launcher(ADD_LAUNCHER, launcher("other.app", "other.Main", "Other"))
        self.act()
