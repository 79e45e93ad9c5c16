"""How a desktop finds the app for a file, a link or something to share, and starts it."""

import fnmatch
import shlex
from dataclasses import dataclass

from . import hostfiles
from .appgrid import read_entry

CACHE = hostfiles.APPLICATIONS / "mimeinfo.cache"

VIEW = "android.intent.action.VIEW"


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
    """What an entry's Exec line says: the activity to start, and the data that it opens."""

    package: str
    activity: str
    data: str = ""

    @classmethod
    def of_entry(cls, entry, data=""):
        """With %U replaced by the address of what is opened; an entry may have no place for it."""
        words = [data if word == "%U" else word for word in shlex.split(read_entry(entry)["Exec"])]
        package, activity = words[-1].split("/", 1)
        return cls(package, activity, words[words.index("-d") + 1] if "-d" in words else "")

    def run(self, bramd):
        """The call that bramd-launcher makes for it."""
        bramd.call("launchIntent", "ssssssa{sv}", VIEW if self.data else "", self.data, "",
                   self.package, self.activity, "", {})


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
