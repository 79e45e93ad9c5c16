"""bramctl installs and removes apps."""

import pytest

from phone.runtime import DATA_ROOT
from phone.waiting import wait_for

from bramctl import NO_RUNTIME, NOT_CONFIRMED, REFUSED, UNREACHABLE, bramctl, start
from daemonsteps import claim_missing_settings_entries, expect_deaths, start_beside_runtime
from hostfiles import DOWNLOADS, download, entries, home_file
from launches import WEATHER
from packagerequests import INSTALL_CODE_UMBRA, removed_packages
from texts import ENGLISH

PAPERTRAIL = "org.example.papertrail"
METRONOME = "org.example.metronome"


def test_an_app_is_installed_from_a_stopped_phone_and_removed(phone):
    phone.start_daemon()
    shown = bramctl("install", download("papertrail"), "--wait").done(
        f"({PAPERTRAIL})", "The Android runtime is ", f"{PAPERTRAIL} is installed.")
    assert shown.out.index("runtime is") < shown.out.index("is installed")
    assert entries()

    bramctl("list").done("PKG ", f"{PAPERTRAIL}  Paper Trail  1.4\n")
    bramctl("remove", PAPERTRAIL).done(f"{PAPERTRAIL} is removed.")
    assert not entries()
    wait_for(lambda: claim_missing_settings_entries(phone), "what the removal did not find")
    bramctl("list").done("No apps are installed.")
    assert bramctl("list", "--json").done().json() == []


def test_without_waiting_only_the_hand_over_is_confirmed(phone):
    start_beside_runtime(phone)
    shown = bramctl("install", download("weather")).done("bramd has taken", "A notice tells")
    assert f"{WEATHER} is installed." not in shown.out
    phone.notifications.wait_for_notice()


def test_paths_are_made_absolute(phone):
    start_beside_runtime(phone)
    apk = download("weather", "my weather.apk")
    bramctl("install", "Downloads/my weather.apk", "--wait", cwd=DOWNLOADS.parent).done()
    assert phone.daemon.log.count(f'installFile: "{apk}"') == 1
    bramctl("install", f"file://{DOWNLOADS}/my%20weather.apk").done()
    assert phone.daemon.log.count(f'installFile: "{apk}"') == 2
    phone.daemon.log.claim_all(f'File already exists in incoming folder: '
                               f'"{DATA_ROOT}/data/xrs-staging/app/incoming/my weather.apk"',
                               "warning")
    phone.notifications.wait_for_notice(2)


def test_an_update_is_noticed(phone):
    start_beside_runtime(phone)
    bramctl("install", download("metronome-1"), "--wait").done(f"{METRONOME} is installed.")
    bramctl("install", download("metronome-2"), "--wait").done(f"{METRONOME} is updated.")
    assert bramctl("list", "--json").json() == [{
        "package": METRONOME, "name": "Metronome", "version": "2.0", "hidden": False,
        "launchers": [f"{METRONOME}.MainActivity"], "opens": []}]


def test_an_app_that_the_runtime_refuses_is_not_confirmed(phone):
    start_beside_runtime(phone)
    bramctl("install", download("starmap"), "--wait", "--timeout", "2").failed(
        NOT_CONFIRMED, "has not appeared in time", "a notice")
    phone.notifications.wait_for_notice()


def test_an_older_version_is_not_confirmed(phone):
    start_beside_runtime(phone)
    bramctl("install", download("metronome-2"), "--wait").done()
    bramctl("install", download("metronome-1"), "--wait", "--timeout", "1").failed(
        NOT_CONFIRMED, "was there before")
    assert ENGLISH["bramd-install-failed"] in phone.notifications.wait_for_notice(2)["summary"]


def test_the_same_version_again_is_not_waited_for(phone):
    start_beside_runtime(phone)
    bramctl("install", download("metronome-1"), "--wait").done()
    bramctl("install", download("metronome-1", "again.apk"), "--wait").failed(
        NOT_CONFIRMED, f"{METRONOME} was there in version 1.0 before")
    phone.notifications.wait_for_notice(2)


def test_a_daemon_that_ends_ends_the_wait(phone, tmp_path):
    start_beside_runtime(phone)
    phone.runtime.fault("umbra", "refuse", code=INSTALL_CODE_UMBRA)
    output = tmp_path / "output"
    process = start("install", str(download("weather")), "--wait", output=output)
    wait_for(lambda: "runtime is active" in output.read_text("utf-8"), "the wait")
    phone.daemon.crash()
    assert process.wait(30) == UNREACHABLE
    assert f"bramd has ended before {WEATHER} was installed" in output.read_text("utf-8")


def test_several_are_installed_even_if_one_is_bad(phone):
    start_beside_runtime(phone)
    bad = home_file("bad.apk", b"This is no archive")
    answer = bramctl("install", download("weather"), bad, download("metronome-1"), "--wait")
    answer.failed(REFUSED, "bad.apk” is no Android package")
    assert [app["package"] for app in bramctl("list", "--json").json()] == [METRONOME, WEATHER]


@pytest.mark.parametrize("name", ["game.xapk", "game.apks", "game.APKM"])
def test_split_archives_are_refused(phone, name):
    phone.start_daemon()
    bramctl("install", home_file(name)).failed(REFUSED, "split into several packages")
    assert phone.unit.state() == "inactive"


@pytest.mark.parametrize(("words", "says"), [
    ("/no/such.apk", "There is no file “/no/such.apk”."),
    ("/home", "no regular file"),
    ("https://example.org/a.apk", "download it first"),
])
def test_what_is_no_file_is_refused(phone, words, says):
    phone.start_daemon()
    bramctl("install", words).failed(REFUSED, says)
    assert phone.unit.state() == "inactive"


def test_a_runtime_that_dies_ends_the_wait(phone):
    start_beside_runtime(phone)
    phone.runtime.fault("umbra", "refuse", code=INSTALL_CODE_UMBRA)
    apk = download("weather")
    output = DOWNLOADS / "output"
    process = start("install", str(apk), "--wait", output=output)
    wait_for(lambda: "runtime is active" in output.read_text("utf-8"), "the wait")
    phone.unit.kill_runtime()
    assert process.wait(30) == NO_RUNTIME
    assert "The Android runtime has failed, and org.example.weather is not installed." \
        in output.read_text("utf-8")
    expect_deaths(phone, 0)


def test_an_app_that_is_not_there_is_not_removed(phone):
    phone.start_daemon()
    bramctl("remove", "org.example.nothing").failed(REFUSED, "bramctl list", "--unlisted")
    bramctl("remove", "../..", "--unlisted").failed(REFUSED, "“../..” is no name of a package.")
    assert phone.unit.state() == "inactive"


def test_an_app_that_the_host_does_not_list_is_removed_when_told_so(phone):
    start_beside_runtime(phone)
    bramctl("remove", "org.example.hidden", "--unlisted").failed(
        NOT_CONFIRMED, "bramd has taken it", "does not list org.example.hidden")
    assert removed_packages(phone.runtime) == ["org.example.hidden"]


def start_refused_removal(phone, output):
    """bramctl, which waits for the end of an app that stays."""
    phone.runtime.fault("package", "refuse")
    process = start("remove", PAPERTRAIL, output=output)
    wait_for(lambda: removed_packages(phone.runtime), "the removal")
    phone.bramd.call("getAndroidVersionData")  # is answered after the removal
    return process


def test_a_daemon_that_ends_ends_the_wait_for_a_removal(papertrail, tmp_path):
    output = tmp_path / "output"
    process = start_refused_removal(papertrail, output)
    papertrail.daemon.crash()
    assert process.wait(30) == UNREACHABLE
    assert f"bramd has ended, and {PAPERTRAIL} is still there." in output.read_text("utf-8")


def test_a_runtime_that_dies_ends_the_wait_for_a_removal(papertrail, tmp_path):
    output = tmp_path / "output"
    process = start_refused_removal(papertrail, output)
    since = papertrail.daemon.log.mark()
    papertrail.unit.kill_runtime()
    assert process.wait(30) == NO_RUNTIME
    assert f"The Android runtime has failed, and {PAPERTRAIL} is still there." \
        in output.read_text("utf-8")
    expect_deaths(papertrail, since)


def test_a_removal_that_the_runtime_refuses_is_not_confirmed(papertrail):
    papertrail.runtime.fault("package", "refuse")
    bramctl("remove", PAPERTRAIL, "--timeout", 1).failed(
        NOT_CONFIRMED, f"{PAPERTRAIL} is still there.", "journalctl -u bramd")
