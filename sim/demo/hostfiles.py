"""The files in which the host's home screen, settings and sharing pages look for Android apps."""

import hashlib
import json
import re
import subprocess
from pathlib import Path

from .appgrid import read_entry

APPLICATIONS = Path("/usr/share/applications")
DATABASE = APPLICATIONS / "mimeinfo.cache"
STATE = Path("/var/lib/bramd")
SHARING = STATE / "sharing.json"
SETTINGS_ENTRIES = Path("/usr/share/corvo-settings/entries")
PARTNER_SPACE = Path("/usr/share/bramd")
HOST = (APPLICATIONS, STATE, SETTINGS_ENTRIES, PARTNER_SPACE)

DATA_ROOT = Path("/home/.android")
STAGING = DATA_ROOT / "data/xrs-staging/app/incoming"

OURS = re.compile(r"bramd_(launcher|handler)_[^;/]*\.desktop")


def entries_of(package):
    """The desktop entries that carry this package's name: launchers first, then handlers."""
    found = [path for path in APPLICATIONS.glob("*.desktop")
             if OURS.fullmatch(path.name)
             and read_entry(path).get("X-bramd-packageName") == package]
    return sorted(found, key=lambda path: (is_handler(path), path.name))


def is_handler(path):
    return path.name.startswith("bramd_handler_")


def validate(path):
    """What desktop-file-validate says: (valid, its remarks)."""
    run = subprocess.run(["/usr/bin/desktop-file-validate", path], check=False,
                         capture_output=True, text=True)
    remarks = (run.stdout + run.stderr).replace(f"{path}: ", "").splitlines()
    return run.returncode == 0, remarks


def share_targets():
    """The sharing registry: package, activity class and record."""
    text = SHARING.read_text(encoding="utf-8")
    return json.loads(text) if text.strip() else {}


def settings_entry(entry):
    """The properties of the settings page that belongs to a desktop entry, or None."""
    path = SETTINGS_ENTRIES / f"{entry.stem}.json"
    if not path.exists():
        return None
    (page,) = json.loads(path.read_text(encoding="utf-8"))["entries"]
    return page["params"]["properties"]


def snapshot(directories):
    """A digest of every file below the directories."""
    contents = {path: _content(path) for path in files_below(directories)}
    return {path: hashlib.sha256(content).hexdigest()
            for path, content in contents.items() if content is not None}


def traces(package):
    """Every file, but for staged ones, that has the package's name in its path or its content."""
    escaped = package.replace("_", "__").replace(".", "_")
    return [path for path in files_below((*HOST, DATA_ROOT)) if path.parent != STAGING
            and (package in str(path) or escaped in str(path)
                 or package.encode() in (_content(path) or b""))]


def files_below(directories):
    return [path for directory in directories for path in sorted(directory.rglob("*"))
            if path.is_file()]


def _content(path):
    """None if the file has gone by now, as those do under whose names files are first written."""
    try:
        return path.read_bytes()
    except FileNotFoundError:
        return None
