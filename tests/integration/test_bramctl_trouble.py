"""What bramctl says when the daemon, the bus or the runtime is away, or of a senseless call."""

import socket
from pathlib import Path

import pytest

from phone.daemon import SERVICE
from phone.namespace import USER_ID

from bramctl import DONE, NO_RUNTIME, NOT_CONFIRMED, REFUSED, UNREACHABLE, USAGE, bramctl
from hostfiles import APPLICATIONS, ICONS, SETTINGS, download
from tools import run as run_program

BLACKLIST = Path("/etc/bramd/app-blacklist")

APP = "org.example.weather"

# Commands that ask the daemon for something.
ASKING = [
    ["start"], ["stop"], ["restart"], ["autostart", "on"], ["install", "{apk}"],
    ["install", "{apk}", "--wait"], ["remove", APP], ["launch", APP], ["intent", "--package", APP],
    ["open-settings", APP], ["licenses"], ["share", "Hello", "--to", f"{APP}/x"], ["size", APP],
    ["usage"], ["clear-cache", APP], ["clear-data", APP, "--yes"], ["stop-app", APP],
    ["boot", APP], ["boot", APP, "on"], ["version"], ["status"],
]
NEEDS_RUNNING = [["size", APP], ["clear-cache", APP], ["clear-data", APP, "--yes"],
                 ["stop-app", APP], ["boot", APP], ["boot", APP, "off"]]
STARTS_IT = [["install", "{apk}"], ["remove", APP], ["launch", APP], ["intent", "--package", APP],
             ["open-settings", APP], ["licenses"], ["share", "Hello", "--to", f"{APP}/x"]]


def run(words, **environment):
    return bramctl(*(word.format(apk=download("weather")) for word in words), **environment)


def test_without_a_daemon(phone):
    del phone
    for words in ASKING:
        run(words).failed(UNREACHABLE, "bramd does not run and cannot be started",
                          "Look at “systemctl status bramd”")


def test_without_a_bus(phone):
    phone.start_daemon()
    for words in [*ASKING, ["monitor"]]:
        run(words, DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere").failed(
            UNREACHABLE, "The system bus cannot be reached", "systemctl status dbus")
    for words in (["list"], ["hidden"], ["targets"], ["help"], ["bugreport"]):
        assert run(words, DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere").status == DONE


def test_with_a_daemon_that_hangs(phone):
    phone.start_daemon()
    phone.daemon.process.pause()
    says = "bramd runs, but does not answer."
    try:
        answer = bramctl("status")
        answer.failed(NOT_CONFIRMED, says, "systemctl restart bramd")
        assert "running, but does not answer\n" in answer.out
        assert bramctl("status", "--json").json()["daemon"] == "unresponsive"
        bramctl("version").failed(NOT_CONFIRMED, says)
        doctor = bramctl("doctor")
        assert doctor.status == REFUSED
        assert says in doctor.out
        assert "running, but does not answer\n" in bramctl("bugreport").done().out
    finally:
        phone.daemon.process.go_on()


def test_without_permission(phone):
    phone.start_daemon()
    phone.system_bus.forbid_calls(SERVICE)
    for words in [["start"], ["licenses"], ["usage"], ["monitor"]]:
        run(words).failed(REFUSED, "You may not call bramd", "Ask the administrator")
    assert "You may not call bramd." in bramctl("doctor").out


def test_with_a_stopped_runtime(phone):
    phone.start_daemon()
    for words in NEEDS_RUNNING:
        run(words).failed(NO_RUNTIME, "does not run (it is inactive)", "bramctl start")
    assert phone.unit.state() == "inactive"


def test_with_a_failed_runtime(phone):
    phone.start_daemon()
    phone.unit.show("failed", "failed")
    for words in [*NEEDS_RUNNING, *STARTS_IT, ["status"]]:
        run(words).failed(NO_RUNTIME, "has failed", "bramctl start", "journalctl -u umbravm")
    assert phone.unit.state() == "failed"


def test_without_the_runtimes_unit(phone):
    phone.start_daemon()
    phone.unit.process.stop()
    phone.unit = None
    for words in [["status"], *NEEDS_RUNNING, *STARTS_IT, ["start"], ["stop"]]:
        run(words).failed(NO_RUNTIME, "systemctl status umbravm.service")


@pytest.mark.parametrize(("load_state", "says"), [
    ("not-found", "systemd knows no unit umbravm.service. Install the runtime first."),
    ("masked", "its unit is masked. “systemctl unmask umbravm.service”")])
def test_with_a_unit_that_cannot_be_started(phone, load_state, says):
    phone.start_daemon()
    phone.unit.set_load_state(load_state)
    for words in [["status"], ["start"], ["stop"], ["restart"], *NEEDS_RUNNING, ["launch", APP],
                  ["licenses"]]:
        run(words).failed(NO_RUNTIME, says)
    answer = bramctl("doctor")
    assert answer.status == REFUSED
    assert "The Android runtime's unit cannot be started." in answer.out
    assert says in answer.out
    assert phone.unit.state() == "inactive"


SENSELESS = [
    ([], "A command is missing."),
    (["nonsense"], "There is no command “nonsense”."),
    (["--json", "list"], "There is no option --json before the command: options stand behind it."),
    (["--version", "x"], "“x” is one argument too many."),
    (["install", "x.apk", "--timeout", "5"], "--timeout counts only together with --wait."),
    (["install"], "FILE is missing. Usage: bramctl install FILE..."),
    (["list", "--colour"], "There is no option --colour."),
    (["start", "--json"], "There is no option --json."),
    (["remove", "a", "b"], "“b” is one argument too many."),
    (["autostart", "yes"], "“yes” is neither “on” nor “off”."),
    (["share", "Hello"], "--to PKG/CLASS is missing."),
    (["install", "x.apk", "--wait", "--timeout", "soon"], "--timeout takes a number of seconds"),
    (["start", "--timeout", "0"], "--timeout takes a number of seconds"),
    (["intent", "--class", "x"], "--class counts only together with --package."),
    (["intent", "--extra-int", "a=b"], "--extra-int takes KEY=NUMBER"),
    (["help", "nonsense"], "There is no command “nonsense”."),
    (["launch", ""], "An argument is empty."),
    (["share", "Hello", "--to", ""], "The value of --to is empty."),
    (["intent"], "Nothing says what is to be started. “bramctl help intent”"),
    (["intent", "--action", ""], "The value of --action is empty."),
]


def test_a_senseless_call_is_refused(phone):
    phone.start_daemon()
    for words, says in SENSELESS:
        bramctl(*words).failed(USAGE, says)
    assert phone.unit.state() == "inactive"


def test_what_cannot_be_written_is_told(phone):
    phone.start_daemon()
    for command in ("bramctl list", "bramctl help", "bramctl version --json", "bramctl --version",
                    "bramd-launcher --help", "bramd-open-apk --version"):
        ended = run_program("sh", "-c", f"{command} >/dev/full")
        assert ended.returncode == REFUSED, command
        assert "The output could not be written (No space left on device)." in ended.stderr
        assert ended.stderr.count("\n") == 1


def test_a_lost_answer_to_an_action_does_not_ask_to_repeat_it(phone):
    phone.start_daemon()
    for redirection in (">/dev/full", ">&-"):
        ended = run_program("sh", "-c", f"bramctl autostart off {redirection}")
        assert ended.returncode == REFUSED
        assert "The output could not be written (" in ended.stderr
        assert "may have been done" in ended.stderr


def test_an_empty_registry_is_explained(phone):
    phone.start_daemon()
    bramctl("targets").done("bramctl start")
    bramctl("share", "Hello", "--to", "a/b").failed(NO_RUNTIME, "bramctl start")


@pytest.mark.parametrize(("content", "says"), [(b"{", "damaged"), (None, "no sharing registry")])
def test_a_registry_that_cannot_be_used_is_explained(phone, content, says):
    phone.start_daemon()
    registry = ICONS / "sharing.json"
    registry.write_bytes(content) if content else registry.unlink()
    bramctl("targets").failed(REFUSED, says, "bramd")
    assert says in bramctl("doctor").out


def test_the_doctor_tells_what_is_wrong(phone):
    phone.start_daemon()
    phone.unit.show("failed", "failed")
    entry = APPLICATIONS / "bramd_launcher_a-a_B.desktop"
    entry.write_text("[Desktop Entry]\nName=A\nX-bramd-packageName=a\n"
                     "Exec=bramd-launcher a.apk a/a.B\n", encoding="utf-8")
    (APPLICATIONS / "bramd_launcher_b-b_B.desktop").write_text("", encoding="utf-8")
    (APPLICATIONS / "bramd_handler_a-a_C.desktop").write_text(
        "[Desktop Entry]\nX-bramd-packageName=a\nNoDisplay=true\n", encoding="utf-8")
    (ICONS / "bramd_launcher_c-c_C.png").write_bytes(b"\x89PNG\r\n\x1a\n")
    (ICONS / "bramd_handler_a-a_C.png").write_bytes(b"\x89PNG\r\n\x1a\n")
    (SETTINGS / "bramd_launcher_c-c_C.json").write_text("{}", encoding="utf-8")
    answer = bramctl("doctor")
    assert answer.status == REFUSED
    for finding in ("The Android runtime has failed",
                    f"The desktop entry {entry} has no icon.",
                    "The app a has no page in the settings.",
                    "bramd_launcher_b-b_B.desktop names no app.",
                    f"The icon {ICONS}/bramd_launcher_c-c_C.png belongs to no desktop entry.",
                    f"The settings entry {SETTINGS}/bramd_launcher_c-c_C.json belongs to no app.",
                    "No app is offered for sharing, though there are some that take it."):
        assert finding in answer.out, answer
    assert "bramctl start" in answer.out


def test_the_doctor_finds_a_session_bus_that_is_away(phone):
    phone.start_daemon()
    phone.session_bus.stop()
    other_users = Path("/run/user/4711/dbus/user_bus_socket")
    other_users.parent.mkdir(parents=True)
    with socket.socket(socket.AF_UNIX) as listening:
        listening.bind(str(other_users))
        listening.listen()
        assert f"The session bus cannot be reached at /run/user/{USER_ID}/" in bramctl("doctor").out


@pytest.mark.phone(logged_in=False)
def test_the_doctor_misses_no_session_bus_when_nobody_is_there(phone):
    phone.session_bus.stop()
    assert "session bus" not in bramctl("doctor").out


def test_an_unreadable_blacklist_is_left_alone(phone):
    phone.start_daemon()
    BLACKLIST.mkdir(parents=True)
    bramctl("hide", APP).failed(REFUSED, "/etc/bramd/app-blacklist cannot be read")
    bramctl("hidden").failed(REFUSED, "/etc/bramd/app-blacklist cannot be read")
