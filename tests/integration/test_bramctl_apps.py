"""bramctl manages apps that are installed, and hides them."""

from pathlib import Path

import pytest

from phone.namespace import mount_tmpfs, unmount
from phone.runtime import DATA_ROOT
from phone.waiting import wait_for

from bramctl import NO_RUNTIME, NOT_CONFIRMED, REFUSED, UNREACHABLE, bramctl, start
from daemonsteps import BINDER
from hostfiles import APPLICATIONS, DOWNLOADS, entry_path
from launches import WEATHER, start_with_weather

DELETE_CACHE_FILES, CLEAR_USER_DATA = 100, 101  # at SDK level 28
APP_DATA = DATA_ROOT / "data/data" / WEATHER


def test_sizes_are_shown(phone):
    start_with_weather(phone)
    (APP_DATA / "cache").mkdir(parents=True, exist_ok=True)
    (APP_DATA / "cache/tiles").write_bytes(b"x" * 300)
    answer = bramctl("size", WEATHER, "--json").done().json()
    assert [app["package"] for app in answer] == [WEATHER]
    assert answer[0]["cache"] == phone.bramd.call("getAppSize", "s", WEATHER)[2] >= 300
    bramctl("size", WEATHER).done("CODE", " bytes\n")


def test_of_an_unknown_app_no_size_is_shown(phone):
    start_with_weather(phone)
    answer = bramctl("size", "org.example.nothing", WEATHER)
    answer.failed(REFUSED, "knows no app org.example.nothing")
    assert WEATHER in answer.out


def test_the_cache_is_cleared(phone):
    start_with_weather(phone)
    (APP_DATA / "cache").mkdir(parents=True, exist_ok=True)
    (APP_DATA / "cache/tiles").write_bytes(b"x" * 300)
    bramctl("clear-cache", WEATHER).done("Cleared the cache", "and has 0 bytes")
    assert not (APP_DATA / "cache/tiles").exists()
    bramctl("clear-cache", WEATHER).done("There was nothing to clear in the cache")


@pytest.mark.parametrize(("words", "typed", "cleared"), [
    (["--yes"], "", True), ([], "y\n", True), ([], "n\n", False), ([], "", False)])
def test_data_is_cleared_when_the_user_agrees(phone, words, typed, cleared):
    start_with_weather(phone)
    APP_DATA.mkdir(parents=True, exist_ok=True)
    (APP_DATA / "map").write_bytes(b"x" * 300)
    answer = bramctl("clear-data", WEATHER, *words, answer=typed)
    assert answer.status == (0 if cleared else REFUSED)
    assert (APP_DATA / "map").exists() is not cleared
    assert ("Cleared the data" in answer.out) is cleared
    assert ("It cannot be brought back" in answer.err) is (not words)
    if not words:  # what is typed here shows on no terminal
        assert answer.err.split("\n", 1)[0].endswith("brought back. [y/N] ")


@pytest.mark.parametrize(("words", "what", "code"), [
    (["clear-cache"], "cache", DELETE_CACHE_FILES),
    (["clear-data", "--yes"], "data", CLEAR_USER_DATA)])
def test_what_stays_there_is_not_confirmed_to_be_cleared(phone, words, what, code):
    start_with_weather(phone)
    (APP_DATA / "cache").mkdir(parents=True, exist_ok=True)
    (APP_DATA / "cache/tiles").write_bytes(b"x" * 300)
    (APP_DATA / "map").write_bytes(b"x" * 300)
    phone.runtime.fault("package", "refuse", code=code)
    bramctl(*words, WEATHER, "--timeout", "1").failed(
        NOT_CONFIRMED, f"the {what} of {WEATHER} still has", f"bramctl size {WEATHER}")


def test_of_a_runtime_that_is_not_reached_yet_nothing_is_claimed(phone):
    start_with_weather(phone)
    for service in ("storagestats", "deviceidle"):
        phone.runtime.hold(service)
    for words in (["size"], ["boot"], ["stop-app"], ["clear-cache"], ["clear-data", "--yes"]):
        bramctl(*words, WEATHER).failed(NO_RUNTIME, f"tells nothing about {WEATHER}", "try again")
    bramctl("boot", WEATHER, "off").failed(NO_RUNTIME, f"tells nothing about {WEATHER}")
    phone.daemon.log.claim_all("Could not create storagestats transaction", "critical", BINDER)


def test_a_size_that_ends_early_is_not_shown(phone):
    start_with_weather(phone)
    phone.runtime.fault("storagestats", "short", value=8)
    bramctl("size", WEATHER).failed(NO_RUNTIME, f"tells nothing about {WEATHER}")


def test_of_an_app_that_only_the_host_knows_nothing_is_shown(phone):
    start_with_weather(phone)
    (APPLICATIONS / "bramd_launcher_a_b-a_b_C.desktop").write_text(
        "[Desktop Entry]\nX-bramd-packageName=a.b\n", encoding="utf-8")
    for words in (["size"], ["clear-cache"], ["clear-data", "--yes"]):
        answer = bramctl(*words, "a.b")
        answer.failed(REFUSED, "The Android runtime does not know a.b")
        assert answer.out == ""


def test_of_several_sizes_the_first_failure_decides(phone):
    start_with_weather(phone)
    phone.runtime.fault("storagestats", "short", value=8)
    answer = bramctl("size", WEATHER, "org.example.nothing")
    assert answer.status == NO_RUNTIME
    assert "knows no app org.example.nothing" in answer.err


def test_a_daemon_that_ends_is_not_asked_for_further_sizes(phone, tmp_path):
    start_with_weather(phone)
    phone.runtime.fault("storagestats", "hang")
    output = tmp_path / "output"
    process = start("size", WEATHER, WEATHER, output=output)
    wait_for(lambda: phone.runtime.transactions("storagestats"), "the first question")
    phone.daemon.crash()
    assert process.wait(30) == UNREACHABLE
    assert output.read_text("utf-8").count("\n") == 1


def test_a_running_app_is_stopped(phone):
    start_with_weather(phone)
    phone.bramd.call("launchApp", "s", WEATHER)
    bramctl("stop-app", WEATHER).done("bramd has taken it")
    assert phone.runtime.control("state")["running"] == []


def test_the_start_at_boot_is_shown_and_changed(phone):
    start_with_weather(phone)
    bramctl("boot", WEATHER).done("may not start")
    bramctl("boot", WEATHER, "on").done(f"{WEATHER} may start")
    assert phone.bramd.call("getAppStartOnBootup", "s", WEATHER) is True
    assert bramctl("boot", WEATHER, "--json").json() == {"package": WEATHER,
                                                         "startsAtBoot": True}
    bramctl("boot", WEATHER, "off").done("may not start")
    bramctl("boot", "org.example.nothing", "on").failed(REFUSED, "bramctl list")


def test_an_app_is_hidden_and_shown_again(phone):
    start_with_weather(phone)
    hidden = bramctl("hide", WEATHER).done("on the list", "systemctl restart bramd")
    assert "knows no app" not in hidden.out
    bramctl("hide", WEATHER).done("already")
    bramctl("hidden").done(f"{WEATHER}  /etc/bramd/app-blacklist")
    phone.stop_daemon()
    phone.start_daemon()
    phone.runtime.announce()
    entry = entry_path(WEATHER, f"{WEATHER}.MainActivity")
    wait_for(lambda: "NoDisplay=true" in entry.read_text("utf-8"), "the hidden entry")
    bramctl("list").done("  REMARK\n", "not in the app grid")

    bramctl("unhide", WEATHER).done("no longer")
    bramctl("unhide", WEATHER).done("not on the list")
    bramctl("hidden").done("No app is on the list.")
    assert bramctl("hidden", "--json").json() == []


def test_an_app_is_hidden_before_it_is_there(phone):
    phone.start_daemon()
    bramctl("hide", WEATHER).done("on the list", "knows no app of this name yet", "bramctl list")


def test_what_the_device_hides_stays_hidden(phone, defaults):
    del phone
    device = DOWNLOADS / "device-blacklist"
    device.write_text(f"{WEATHER}\n", "utf-8")
    defaults.write_text(f'BRAMD_PACKAGE_BLACKLIST_PATH="{device}"\n', "utf-8")
    says = f"{WEATHER} stays hidden by the list of the device, {device}"
    bramctl("hidden").done(f"{WEATHER}  {device}")
    bramctl("unhide", WEATHER).failed(REFUSED, says)

    bramctl("hide", WEATHER).done()
    assert [app["list"] for app in bramctl("hidden", "--json").json()] == [
        "/etc/bramd/app-blacklist", str(device)]
    answer = bramctl("unhide", WEATHER)
    answer.failed(REFUSED, says)
    assert "no longer on the list" in answer.out
    assert [app["list"] for app in bramctl("hidden", "--json").json()] == [str(device)]
    assert device.read_text("utf-8") == f"{WEATHER}\n"


@pytest.fixture(name="defaults")
def defaults_fixture():
    """The environment that bramd's unit has on the device."""
    path = Path("/etc/default/bramd")
    mount_tmpfs(path.parent)
    yield path
    unmount(path.parent)
