"""bramctl as an ordinary user, who may not read and write everything."""

import os
from pathlib import Path

import pytest

from bramctl import REFUSED, bramctl_as_user
from conditions import needs_other_users
from daemonsteps import DAEMON
from hostfiles import (APPLICATIONS, ICONS, SETTINGS, SHARING, download, entry_path, icon_path,
                       settings_path)
from launches import WEATHER

BLACKLIST = Path("/etc/bramd/app-blacklist")

pytestmark = needs_other_users


@pytest.fixture(name="close")
def close_fixture():
    """Takes everybody's permissions away, until the test has ended."""
    closed = {}

    def close(path):
        closed[path] = path.stat().st_mode & 0o777
        path.chmod(0o700 if path.is_dir() else 0o600)
    yield close
    for path, mode in closed.items():
        if path.exists():
            os.chmod(path, mode)


def test_the_list_of_hidden_apps_is_not_changed(phone):
    del phone
    bramctl_as_user("hide", WEATHER).failed(REFUSED, f"try “sudo bramctl hide {WEATHER}”")
    bramctl_as_user("unhide", WEATHER).failed(REFUSED, f"try “sudo bramctl unhide {WEATHER}”")


def test_a_sound_phone_is_well(papertrail):
    del papertrail
    bramctl_as_user("doctor").done("All is well.")


def test_closed_directories_are_told(papertrail, close):
    del papertrail
    for directory in (APPLICATIONS, ICONS, SETTINGS):
        close(directory)
    answer = bramctl_as_user("doctor")
    assert answer.status == REFUSED
    for directory in (APPLICATIONS, ICONS, SETTINGS):
        assert f"You cannot read the directory {directory}/." in answer.out
    assert len(answer.out.splitlines()) == 6, "nothing is known of what is in there"

    says = f"You cannot read the directory {APPLICATIONS}/. As root, open it for everybody"
    bramctl_as_user("list").failed(REFUSED, says)
    bramctl_as_user("launch", WEATHER).failed(REFUSED, says)
    bramctl_as_user("targets").failed(REFUSED, "You cannot read")


def test_closed_files_are_told(papertrail, close):
    del papertrail
    entry = entry_path("org.example.papertrail", "org.example.papertrail.MainActivity")
    for path in (entry, settings_path(entry), icon_path(entry), SHARING):
        close(path)
    answer = bramctl_as_user("doctor")
    for what in (f"desktop entry {entry}", f"settings entry {settings_path(entry)}",
                 f"icon {icon_path(entry)}", f"sharing registry {SHARING}"):
        assert f"You cannot read the {what}." in answer.out, answer


def test_a_closed_list_of_hidden_apps_is_told(phone, close):
    del phone
    close(BLACKLIST.parent)
    bramctl_as_user("hidden").failed(REFUSED, f"{BLACKLIST} cannot be read")


@pytest.mark.phone(services=["notifications", "accounts"])
def test_what_the_policy_forbids_is_refused(phone):
    phone.accounts.allow_installation(False)
    log = phone.start_daemon().log
    bramctl_as_user("install", str(download("weather"))).failed(
        REFUSED, "bramd has refused", "weather.apk", "journalctl -u bramd")
    log.expect("APK installation prohibited", "critical", DAEMON)
    bramctl_as_user("remove", WEATHER, "--unlisted").failed(
        REFUSED, f"bramd has refused to remove {WEATHER}: you may not remove apps on this phone.")
    log.expect("APK uninstallation prohibited", "critical", DAEMON)
