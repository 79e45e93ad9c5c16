"""What an APK file says about itself, read by Debian's aapt and not by anything under test."""

import re
import subprocess
import zipfile
from pathlib import Path

from .narrator import Failure


class ApkFile:
    """Package, version, label and launchers (activity class: label) of an APK."""

    def __init__(self, path):
        self.path = Path(path)
        badging = subprocess.run(["/usr/bin/aapt", "dump", "badging", self.path], check=False,
                                 capture_output=True, text=True, errors="replace")
        header = re.search(r"^package: name='([^']+)' versionCode='(\d*)' versionName='([^']*)'",
                           badging.stdout, re.MULTILINE)
        if badging.returncode != 0 or not header:
            raise Failure(f"{path} is no APK: {_reason(badging.stderr)}")
        self.package, self.version_code, self.version = header.groups()
        label = re.search(r"^application-label:'(.*)'$", badging.stdout, re.MULTILINE)
        self.label = label.group(1) if label else self.package
        # A launchable activity without a label of its own has the application's.
        self.launchers = {name: own or self.label for name, own in re.findall(
            r"^launchable-activity: name='([^']*)'  label='(.*)' icon='", badging.stdout,
            re.MULTILINE)}

    @property
    def kilobytes(self):
        return (self.path.stat().st_size + 1023) // 1024

    def file_with(self, content):
        """The name of the file inside with exactly this content, or None."""
        with zipfile.ZipFile(self.path) as archive:
            for member in archive.infolist():
                if member.file_size == len(content) and archive.read(member) == content:
                    return member.filename
        return None


def _reason(complaints):
    """The first complaint of aapt, without the log's tag, time and process in front of it."""
    if not complaints.strip():
        return "no package in it"
    line = complaints.strip().splitlines()[0]
    return re.sub(r"^\S+ [VDIWEF] [-\d]+ [:\d]+ +\d+ +\d+ ", "", line)
