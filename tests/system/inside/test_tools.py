"""The tools, as the phone's people run them: installed from their package, on real services."""

import pytest

from bramctl import NO_RUNTIME, REFUSED, UNREACHABLE, Answer
from hostfiles import APPLICATIONS, DOWNLOADS, ICONS, entries, traces
from launches import started_intents
from phone.waiting import wait_for

from realphone import (DAEMON_UNIT, OTHER_USER, PATIENCE_S, RUNTIME_UNIT, SESSION_BUS, USER,
                       as_user, run, systemctl)
from steps import download, install, start_runtime, wait_for_entries

PAPERTRAIL = "org.example.papertrail"
WEATHER = "org.example.weather"
PATIENTLY = ["--timeout", "120"]
OPEN_APK = "/usr/share/applications/bramd-open-apk.desktop"


def run_as(user, *words, **environment):
    """Runs a program as on that user's desktop."""
    variables = {"LC_ALL": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": SESSION_BUS, **environment}
    return as_user(user, "env", *(f"{name}={value}" for name, value in variables.items()), *words,
                   check=False)


def bramctl(*words, user=USER, **environment):
    return Answer(run_as(user, "bramctl", *words, **environment))


def check_complaints(status, *texts, **environment):
    """Each tool, asked for something, fails so, with one line for its user in which these are."""
    bramctl("start", **environment).failed(status, *texts)
    for words in (("bramd-launcher", f"{WEATHER}.apk", f"{WEATHER}/{WEATHER}.MainActivity"),
                  ("bramd-open-apk", download("weather"))):
        done = run_as(USER, *words, **environment)
        assert done.returncode == status, done.stderr
        assert done.stderr.startswith(f"{words[0]}: ") and done.stderr.count("\n") == 1, done.stderr
        for text in texts:
            assert text in done.stderr, done.stderr
    assert not entries()


@pytest.fixture(name="masked")
def masked_fixture():
    """Masks units until the test ends, so that nothing can start them."""
    units = []

    def mask(unit):
        systemctl("stop", unit)
        systemctl("mask", "--runtime", unit)
        units.append(unit)
    yield mask
    for unit in units:
        systemctl("unmask", "--runtime", unit)


def test_an_app_is_installed_listed_measured_and_removed(phone):
    shown = bramctl("install", download("papertrail"), "--wait", *PATIENTLY).done(
        "The Android runtime is ", f"{PAPERTRAIL} is installed.")
    assert shown.out.index("runtime is") < shown.out.index("is installed")
    assert phone.unit.state() == "active"
    bramctl("list").done(f"{PAPERTRAIL}  Paper Trail  1.4\n")
    assert bramctl("size", PAPERTRAIL, "--json").done().json()[0]["package"] == PAPERTRAIL
    assert bramctl("status", "--json").done().json()["runtime"]["state"] == "active"
    bramctl("remove", PAPERTRAIL).done(f"{PAPERTRAIL} is removed.")
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)


def test_the_runtime_is_started_stopped_and_enabled(phone):
    bramctl("start", *PATIENTLY).done("runs.")
    assert phone.unit.state() == "active"
    bramctl("autostart", "on").done("starts at boot")
    assert run("systemctl", "is-enabled", RUNTIME_UNIT, check=False).stdout == "enabled\n"
    bramctl("autostart", "off").done("only when it is needed")
    assert run("systemctl", "is-enabled", RUNTIME_UNIT, check=False).stdout == "disabled\n"
    bramctl("stop", *PATIENTLY).done("has stopped")
    assert phone.unit.state() == "inactive"


def test_a_desktop_starts_apps_and_gives_them_files(phone):
    start_runtime(phone)
    install(phone, "papertrail")
    wait_for_entries(5)
    phone.runtime.forget()
    letter = DOWNLOADS / "letter.pdf"
    letter.write_bytes(b"%PDF-1.4\n")
    entry = next(APPLICATIONS.glob("bramd_launcher_*.desktop"))
    started = run_as(USER, "gio", "launch", entry)
    assert (started.returncode, started.stderr) == (0, "")
    (intent,) = wait_for(lambda: started_intents(phone), "the app's intent", PATIENCE_S)
    assert (intent["action"], intent["package"]) == ("android.intent.action.MAIN", PAPERTRAIL)
    phone.runtime.forget()

    handler = next(path for path in APPLICATIONS.glob("bramd_handler_*.desktop")
                   if "application/pdf" in path.read_text("utf-8"))
    opened = run_as(USER, "gio", "launch", handler, letter)
    assert (opened.returncode, opened.stderr) == (0, "")
    (intent,) = wait_for(lambda: started_intents(phone), "the file's intent", PATIENCE_S)
    assert (intent["action"], intent["type"]) == ("android.intent.action.VIEW", "application/pdf")
    assert intent["data"].endswith("/Downloads/letter.pdf")
    letter.unlink()


def test_a_double_click_on_a_file_installs_it(phone):
    start_runtime(phone)
    opened = run_as(USER, "gio", "launch", OPEN_APK, download("weather"))
    assert (opened.returncode, opened.stderr) == (0, "")
    wait_for_entries(1)
    wait_for(lambda: len(phone.notifications.notices()) == 2, "both notices", PATIENCE_S)
    first, second = (notice["summary"] for notice in phone.notifications.notices())
    assert first.endswith(": weather.apk")
    assert second.startswith("App installed: ")


def test_only_root_hides_apps(phone):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    bramctl("hide", WEATHER).failed(REFUSED, "root")
    bramctl("hide", WEATHER, user="root").done("on the list")
    try:
        assert [app["package"] for app in bramctl("hidden", "--json").done().json()] == [WEATHER]
    finally:
        bramctl("unhide", WEATHER, user="root").done("no longer")


def test_a_person_without_the_right_is_told_whom_to_ask(phone):
    bramctl("start", user=OTHER_USER).failed(REFUSED, "may not call bramd", "administrator")
    assert phone.unit.state() == "inactive"


def test_each_tells_that_the_daemon_cannot_be_started(phone, masked):
    masked(DAEMON_UNIT)
    check_complaints(UNREACHABLE, "cannot be started", "systemctl status bramd")
    # That the file is being installed, and that it is not.
    assert len(phone.notifications.notices()) == 2


def test_each_tells_that_the_bus_cannot_be_reached(phone):
    check_complaints(UNREACHABLE, "bus cannot be reached", "systemctl status dbus",
                     DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere")
    assert phone.unit.state() == "inactive"


def test_a_stopped_daemon_is_started_by_the_first_command(phone):
    phone.stop_daemon()
    bramctl("version").done("Android ")
    assert phone.daemon.pid


def test_each_tells_that_the_runtime_is_masked(phone, masked):
    masked(RUNTIME_UNIT)
    check_complaints(NO_RUNTIME, "masked", "systemctl unmask")
    assert phone.unit.state() == "inactive"


def test_the_doctor_tells_a_healthy_phone_from_another(phone):
    start_runtime(phone)
    install(phone, "papertrail")
    wait_for_entries(5)
    bramctl("doctor").done("All is well.")
    icon = next(ICONS.glob("bramd_launcher_*.png"))
    content = icon.read_bytes()
    icon.unlink()
    try:
        answer = bramctl("doctor")
    finally:
        icon.write_bytes(content)
    assert answer.status == REFUSED, answer
    assert "has no icon" in answer.out, answer
