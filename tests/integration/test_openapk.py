"""An APK file is opened on a desktop: bramd-open-apk, through its entry."""

import re
from pathlib import Path

import pytest

from phone.namespace import USER, USER_ID
from phone.waiting import wait_for

import tools
from conditions import needs_other_users
from daemonsteps import DAEMON, expect_deaths, start_beside_runtime
from hostfiles import INCOMING, download, entries, home_file
from texts import ENGLISH, catalogue

ENTRY = Path(__file__).resolve().parents[2] / "data/bramd-open-apk.desktop"
HOME = Path("/home") / USER

FIRST_NOTICE = 1  # the number that the service gives


def open_apk(*words, **environment):
    return tools.run("bramd-open-apk", *words, **environment)


def own_notices(phone, count):
    """What the opener showed, each a dict; the daemon's notices are no part of it."""
    def found():
        return [notice for notice in phone.notifications.notices()
                if notice["summary"] and not notice["summary"].startswith(
                    ENGLISH["bramd-install-success"])]
    wait_for(lambda: len(found()) >= count, f"{count} notices")
    return found()


def check_failure(phone, name, advice):
    """A notice says that the file is being installed, and is replaced by one that says otherwise."""
    first, second = own_notices(phone, 2)
    assert first["summary"] == f"{ENGLISH['bramd-installing']}: {name}"
    assert (second["replaces"], second["summary"], second["body"]) == (
        FIRST_NOTICE, f"{ENGLISH['bramd-install-failed']}: {name}", ENGLISH[advice])


def complaint(result):
    """The one line that a failure gives."""
    assert result.stderr.startswith("bramd-open-apk: ") and result.stderr.count("\n") == 1, result
    return result.stderr.removeprefix("bramd-open-apk: ").rstrip("\n")


@pytest.mark.parametrize("name", ["papertrail.apk", "100% \"Åse's\" $HOME #1.apk"])
def test_a_double_click_installs(phone, name):
    start_beside_runtime(phone)
    result = tools.run("gio", "launch", ENTRY, download("papertrail", as_name=name))
    assert (result.returncode, result.stderr) == (0, "")
    wait_for(lambda: len(entries()) == 5, "the app's entries", 30)
    shown = own_notices(phone, 1)
    assert [(notice["application"], notice["summary"], notice["body"]) for notice in shown] == [
        (ENGLISH["bramd-ap-name"], f"{ENGLISH['bramd-installing']}: {name}", "")]
    assert shown[0]["hints"] == {"image-path": "icon-s-android", "transient": True}


def test_several_files_are_installed_each_with_its_notice(phone):
    start_beside_runtime(phone)
    files = [download("papertrail"), download("weather").as_uri()]
    result = open_apk(*files)
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")
    wait_for(lambda: len(entries()) == 6, "the apps' entries", 30)
    assert [notice["replaces"] for notice in own_notices(phone, 2)] == [0, 0]


def test_a_failed_runtime_is_started(phone):
    start_beside_runtime(phone)
    since = phone.daemon.log.mark()
    phone.unit.kill_runtime()
    phone.unit.wait_for_state("failed")
    expect_deaths(phone, since)
    assert open_apk(download("weather")).returncode == 0
    wait_for(entries, "the app's entry", 30)


def test_a_file_that_is_not_there_is_told_of(phone):
    result = open_apk("gone.apk", cwd=HOME)
    assert result.returncode == 1
    assert complaint(result) == (f"There is no file “{HOME}/gone.apk”. Look at its spelling, and "
                                 "whether it was moved or deleted.")
    assert [(notice["replaces"], notice["summary"], notice["body"])
            for notice in own_notices(phone, 1)] == [
                (0, f"{ENGLISH['bramd-install-failed']}: gone.apk",
                 ENGLISH["bramd-install-no-file"])]


@pytest.mark.parametrize(("name", "says"), [
    ("note.txt", "is no Android package"), ("app.xapk", "holds an app split into several")])
def test_a_file_that_is_no_app_starts_nothing(phone, name, says):
    phone.start_daemon()
    path = home_file(name)
    result = open_apk(path)
    assert result.returncode == 1
    assert says in complaint(result)
    assert [(notice["summary"], notice["body"]) for notice in own_notices(phone, 1)] == [
        (f"{ENGLISH['bramd-install-failed']}: {name}", ENGLISH["bramd-install-no-file"])]
    assert phone.unit.state() == "inactive"


@pytest.mark.parametrize(("words", "says"), [
    ([], "A file is needed."), ([""], "An argument is empty."),
    (["--bogus"], "There is no option --bogus;")])
def test_a_senseless_call_is_refused_without_a_notice(phone, words, says):
    result = open_apk(*words)
    assert result.returncode == 2
    assert complaint(result).startswith(says)
    assert phone.notifications.notices() == []


@needs_other_users
@pytest.mark.phone(services=["notifications", "accounts"])
def test_a_policy_that_forbids_it_is_told_of_and_the_first_notice_taken_back(phone):
    start_beside_runtime(phone)
    phone.accounts.allow_installation(False)
    path = download("weather")
    path.chmod(0o644)
    result = tools.run("setpriv", "--reuid", str(USER_ID), "--regid", str(USER_ID),
                       "--clear-groups", "bramd-open-apk", path)
    assert result.returncode == 1
    assert complaint(result).startswith(f"bramd has refused “{path}”.")
    phone.daemon.log.expect("APK installation prohibited", "critical", DAEMON)
    phone.notifications.wait_for_notice(3)
    # The daemon's own, which arrives when it will, and without a title.
    assert [notice["body"] for notice in phone.notifications.notices() if not notice["summary"]] == [
        ENGLISH["bramd-app_installation_disallowed"]]
    check_failure(phone, "weather.apk", "bramd-install-refused")


def test_a_runtime_that_fails_again_is_told_of(phone):
    phone.start_daemon()
    phone.unit.set_command(["/bin/false"], "/run/phone/nobody")
    phone.unit.show("failed", "failed")
    result = open_apk(download("weather"))
    assert result.returncode == 5
    assert complaint(result).startswith("The Android runtime has failed to start.")
    check_failure(phone, "weather.apk", "bramd-install-unavailable")


def test_a_file_that_the_daemon_refuses_is_told_of(phone):
    start_beside_runtime(phone)
    (INCOMING / "weather.apk/in-the-way").mkdir(parents=True)
    path = download("weather")
    result = open_apk(path)
    phone.daemon.log.claim_all(re.compile(".*(incoming|rename).*"))
    assert result.returncode == 1
    assert complaint(result) == (
        f"bramd has refused “{path}”. If you may not install apps, a notice says so; “journalctl "
        "-u bramd” tells the reason.")
    check_failure(phone, "weather.apk", "bramd-install-refused")


def test_a_daemon_that_does_not_run_is_told_of(phone):
    result = open_apk(download("weather"))
    assert result.returncode == 4
    assert complaint(result).startswith("bramd does not run and cannot be started (")
    check_failure(phone, "weather.apk", "bramd-install-unavailable")


def test_a_bus_that_is_away_is_told_of(phone):
    phone.start_daemon()
    apk = download("papertrail")
    result = open_apk(apk, DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere")
    assert result.returncode == 4
    assert complaint(result).startswith("The system bus cannot be reached (")
    check_failure(phone, apk.name, "bramd-install-unavailable")


def test_the_first_failure_decides_and_the_rest_is_tried(phone):
    start_beside_runtime(phone)
    result = open_apk("gone.apk", download("weather"), cwd=HOME)
    assert result.returncode == 1
    wait_for(entries, "the app's entry", 30)


def test_notices_are_in_the_users_language(phone):
    open_apk(download("weather"), LANGUAGE="de", LC_ALL="C.UTF-8", LANG="de_DE.UTF-8")
    german = catalogue("bramd-de")
    assert [notice["summary"] for notice in own_notices(phone, 2)] == [
        f"{german['bramd-installing']}: weather.apk",
        f"{german['bramd-install-failed']}: weather.apk"]


@pytest.mark.phone(services=())
def test_without_a_notification_service_it_installs_as_well(phone):
    start_beside_runtime(phone)
    for address in ({}, {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/run/nobody"}):
        result = open_apk(download("weather"), **address)
        assert (result.returncode, result.stderr) == (0, "")
    phone.daemon.log.claim_all(re.compile("File already exists in incoming folder.*"))
    wait_for(entries, "the app's entry", 30)


def test_it_tells_what_it_is():
    helped, nothing = open_apk("--help"), open_apk()
    assert (helped.returncode, helped.stderr) == (0, "")
    assert helped.stdout.startswith("Usage: bramd-open-apk FILE...\n")
    assert nothing.returncode == 2
    assert complaint(nothing) == "A file is needed. See “bramd-open-apk --help”."
