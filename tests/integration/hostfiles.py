"""The files that the daemon writes for the host, and those that it reads."""

import json
import os
import shutil
import stat
from pathlib import Path

from phone.namespace import USER
from phone.runtime import DATA_ROOT

APPLICATIONS = Path("/usr/share/applications")
ICONS = Path("/var/lib/bramd")
SHARING = ICONS / "sharing.json"
SETTINGS = Path("/usr/share/corvo-settings/entries")
PARTNER_SPACE = Path("/usr/share/bramd/partnerspace")

INCOMING = DATA_ROOT / "data/xrs-staging/app/incoming"
PACKAGED = DATA_ROOT / "data/xrs-staging/app/packaged"

DOWNLOADS = Path("/home") / USER / "Downloads"
APKS = Path(os.environ["BRAMD_BUILD_DIR"]) / "sim" / "apks"


def download(name, as_name=None):
    """Puts one of the build's APKs into the user's download folder; returns its path there."""
    target = DOWNLOADS / (as_name or f"{name}.apk")
    shutil.copyfile(APKS / f"{name}.apk", target)
    return target


def home_file(name, content=b"x"):
    """Makes a file in the user's download folder; returns its path there."""
    path = DOWNLOADS / name
    path.write_bytes(content)
    return path


def escape(name):
    return name.replace("_", "__").replace(".", "_")


def entry_path(package, activity, handler=False):
    kind = "handler" if handler else "launcher"
    return APPLICATIONS / f"bramd_{kind}_{escape(package)}-{escape(activity)}.desktop"


def icon_path(entry):
    return ICONS / (entry.stem + ".png")


def settings_path(entry):
    return SETTINGS / (entry.stem + ".json")


def entries():
    """The names of all desktop entries of the daemon's making."""
    return sorted(path.name for path in APPLICATIONS.glob("bramd_*"))


def read_entry(path):
    """A desktop entry's keys and values, in the order of the file."""
    lines = path.read_text(encoding="utf-8").split("\n")
    assert lines[0] == "[Desktop Entry]", lines
    assert lines[-1] == "", lines
    return dict(line.split("=", 1) for line in lines[1:-1])


def read_json(path):
    return json.loads(path.read_text(encoding="utf-8"))


def owner_and_mode(path):
    """E.g. (0, 0, 0o644)."""
    status = path.stat()
    return status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)


def traces():
    """Every file of the daemon's making that stands for an app."""
    found = list(APPLICATIONS.glob("bramd_*")) + list(SETTINGS.glob("bramd_*"))
    found += [path for path in ICONS.glob("*") if path != SHARING]
    if SHARING.exists() and SHARING.read_bytes().strip() not in (b"", b"{\n}"):
        found.append(SHARING)
    return sorted(map(str, found))
