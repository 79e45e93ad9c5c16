"""How a desktop finds the app for a file, a link or something to share, and starts it."""

import fnmatch
import shlex
import subprocess
from dataclasses import dataclass

from . import hostfiles
from .appgrid import read_entry
from .narrator import check

CACHE = hostfiles.APPLICATIONS / "mimeinfo.cache"

LAUNCH_TIMEOUT_S = 60


def entries_for(mime_type):
    """The desktop entries that open this type, as update-desktop-database has listed them."""
    if not CACHE.exists():
        return []
    for line in CACHE.read_text(encoding="utf-8").splitlines():
        kind, _equals, names = line.partition("=")
        if kind == mime_type:
            return [hostfiles.APPLICATIONS / name for name in names.split(";") if name]
    return []


@dataclass
class Command:
    """What an entry's Exec line says: the program to run, and the activity that it starts."""

    words: list
    package: str
    activity: str

    @classmethod
    def of_entry(cls, entry, opened=()):
        """With %U replaced by the addresses of what is opened; an entry may have no place for
        them."""
        words = []
        for word in shlex.split(read_entry(entry)["Exec"]):
            words += opened if word == "%U" else [word]
        package, activity = words[-1].split("/", 1)
        return cls(words, package, activity)

    def run(self):
        """As the desktop runs it, until it ends."""
        done = subprocess.run(self.words, check=False, capture_output=True, text=True,
                              timeout=LAUNCH_TIMEOUT_S)
        check(done.returncode == 0, f"{self.words} ended with {done.returncode}: {done.stderr}")


@dataclass
class ShareTarget:
    """One offer of the sharing page, from the registry."""

    package: str
    activity: str
    record: dict

    @property
    def name(self):
        return self.record["caption"] or self.record["label"]

    def takes(self, mime_type, several):
        return (self.record["multi"] or not several) and any(
            fnmatch.fnmatchcase(mime_type, pattern) for pattern in self.record["mimetypes"])


def share_targets(package):
    """Those for one file first, as some of the others want several."""
    found = [ShareTarget(package, activity, record)
             for activity, record in hostfiles.share_targets().get(package, {}).items()]
    return sorted(found, key=lambda target: target.record["multi"])
