"""What the settings pages ask about apps, and do with them."""

import subprocess

import pytest

from phone.runtime import DATA_ROOT
from phone.waiting import wait_for

from daemonsteps import BINDER, DAEMON, start_beside_runtime
from hostfiles import APKS, APPLICATIONS, download, entries
from launches import EVERY_LEVEL, WEATHER, check_level_complaints, start_with_weather

FORCE_STOP = {27: 72, 28: 77, 29: 68, 30: 68}
QUERY_STATS = {27: 6, 28: 7, 29: 7, 30: 7}
IS_WHITELISTED = {27: 13, 28: 16, 29: 16, 30: 16}
ADD_TO_WHITELIST, REMOVE_FROM_WHITELIST = 1, 2
CLEAR_CACHE = {27: 100, 28: 100, 29: 103, 30: 103}
CLEAR_DATA = {27: 101, 28: 101, 29: 104, 30: 104}

APP_DATA = DATA_ROOT / "data/data" / WEATHER
UNKNOWN_USAGE = "Could not determine android app data usage"


@pytest.fixture(name="du")
def du_fixture(tmp_path):
    """Puts a shell script into the place of du until the test ends."""
    stub = tmp_path / "du"
    mounted = []

    def replace(script):
        stub.write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        stub.chmod(0o755)
        if not mounted:
            subprocess.run(["/usr/bin/mount", "--bind", stub, "/usr/bin/du"], check=True)
            mounted.append(stub)

    yield replace
    if mounted:
        subprocess.run(["/usr/bin/umount", "/usr/bin/du"], check=True)


def put(path, size):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b"x" * size)


def told_home_screen(phone):
    """(method, arguments) of what the home screen's model was told."""
    return [call for method in ("updatingStarted", "updatingFinished")
            for call in phone.homescreen.calls(method)]


def only_request(phone, service, codes):
    found = phone.runtime.transactions(service, codes[phone.runtime.sdk])
    assert len(found) == 1, found
    assert "problem" not in found[0], found
    return found[0]["decoded"]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_an_apps_size_is_told_with_its_cache_apart(phone, sdk):
    del sdk
    start_with_weather(phone)
    _code, before, cache_before = phone.bramd.call("getAppSize", "s", WEATHER)
    put(APP_DATA / "files/map", 5000)
    put(APP_DATA / "cache/tiles", 300)
    assert phone.bramd.call("getAppSize", "s", WEATHER) == (
        (APKS / "weather.apk").stat().st_size, before + 5000, cache_before + 300)
    request = phone.runtime.transactions("storagestats", QUERY_STATS[phone.runtime.sdk])[0]
    assert "problem" not in request
    assert request["decoded"]["packageName"] == WEATHER
    assert request["decoded"]["userId"] == 0
    check_level_complaints(phone, 2)


def test_nothing_is_known_while_the_runtime_is_stopped(phone, bramd):
    assert bramd.call("getAppSize", "s", WEATHER) == (0, 0, 0)
    phone.daemon.log.expect("Could not create storagestats transaction", "critical", BINDER)
    assert bramd.call("getAppStartOnBootup", "s", WEATHER) is False
    for method in ("forceStopApp", "deleteAppCacheFiles", "clearAppUserData"):
        bramd.call(method, "s", WEATHER)


def test_the_usage_of_all_apps_is_measured(phone):
    phone.start_daemon()
    put(APP_DATA / "files/map", 0)
    before = phone.bramd.call("getAndroidAppDataUsage")
    put(APP_DATA / "files/map", 123456)
    assert phone.bramd.call("getAndroidAppDataUsage") == before + 123456


@pytest.mark.parametrize(("script", "usage"), [
    (r"printf '123456\t/home/.android/data\n'", 123456),
    (r"printf '77\t/home/.android/data\n'; exit 1", 77),
    (r"printf 'many\t/home/.android/data\n'", 0),
    (r"printf '5\t/a\0 9\t/b\n'", 5),
])
def test_the_first_field_of_du_is_believed(bramd, du, script, usage):
    du(script)
    assert bramd.call("getAndroidAppDataUsage") == usage


@pytest.mark.parametrize("script", [
    "exit 0", "echo 123456", r"printf '123\0\t/a\n'", r"printf '123\t/a\n'; kill -SEGV $$"])
def test_an_answer_of_du_that_says_nothing_is_reported(phone, du, script):
    phone.start_daemon()
    du(script)
    assert phone.bramd.call("getAndroidAppDataUsage") == 0
    phone.daemon.log.expect(UNKNOWN_USAGE, "warning", DAEMON)


def test_du_is_asked_for_the_apparent_size_on_one_file_system(phone, du, tmp_path):
    phone.start_daemon()
    du(f'echo "$@" > {tmp_path}/arguments; printf "1\\t/\\n"')
    assert phone.bramd.call("getAndroidAppDataUsage") == 1
    option, directory = (tmp_path / "arguments").read_text("utf-8").split()
    assert option == "-sxb"
    assert directory.startswith(str(DATA_ROOT))


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_only_changes_of_the_start_at_boot_are_signalled(phone, sdk):
    start_with_weather(phone)
    changes = phone.bramd.collect_signal("appStartOnBootupChanged")
    for allowed in (False, True, True, False):
        phone.bramd.call("setAppStartOnBootup", "sb", WEATHER, allowed)
        assert phone.bramd.call("getAppStartOnBootup", "s", WEATHER) is allowed
    wait_for(lambda: len(changes) == 2, lambda: f"two changes in {changes}")
    assert changes == [(WEATHER, True), (WEATHER, False)]
    received = [record["code"] for record in phone.runtime.transactions("deviceidle")]
    asked = IS_WHITELISTED[sdk]
    assert received == [code for change in (REMOVE_FROM_WHITELIST, ADD_TO_WHITELIST,
                                            ADD_TO_WHITELIST, REMOVE_FROM_WHITELIST)
                        for code in (asked, change, asked, asked)]
    check_level_complaints(phone, received.count(asked))


def test_a_change_that_the_runtime_does_not_make_is_not_signalled(phone):
    start_with_weather(phone)
    changes = phone.bramd.collect_signal("appStartOnBootupChanged")
    phone.bramd.call("setAppStartOnBootup", "sb", "org.example.unknown", True)
    phone.bramd.call("setAppStartOnBootup", "sb", WEATHER, True)
    wait_for(lambda: changes, "the change of the other app")
    assert changes == [(WEATHER, True)]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_an_app_is_stopped_and_its_end_is_signalled(phone, sdk):
    del sdk
    start_with_weather(phone)
    closed = phone.bramd.collect_signal("appClosed")
    phone.bramd.call("launchApp", "s", WEATHER)
    phone.bramd.call("forceStopApp", "s", WEATHER)
    wait_for(lambda: closed, "appClosed")
    assert closed == [(WEATHER,)]
    assert only_request(phone, "activity", FORCE_STOP)["packageName"] == WEATHER
    assert phone.runtime.control("state")["running"] == []
    check_level_complaints(phone, 1)


def test_the_end_of_an_app_that_its_user_closes_is_signalled(phone):
    start_with_weather(phone)
    closed = phone.bramd.collect_signal("appClosed")
    phone.bramd.call("launchApp", "s", WEATHER)
    phone.runtime.control("close", package=WEATHER)
    wait_for(lambda: closed, "appClosed")
    assert closed == [(WEATHER,)]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_cache_and_data_are_cleared(phone, sdk):
    del sdk
    start_with_weather(phone)
    put(APP_DATA / "files/map", 10)
    put(APP_DATA / "cache/tiles", 10)
    phone.bramd.call("deleteAppCacheFiles", "s", WEATHER)
    assert not (APP_DATA / "cache/tiles").exists()
    assert (APP_DATA / "files/map").exists()
    phone.bramd.call("clearAppUserData", "s", WEATHER)
    assert not (APP_DATA / "files/map").exists()
    for codes in (CLEAR_CACHE, CLEAR_DATA):
        request = only_request(phone, "package", codes)
        assert (request["packageName"], request["userId"]) == (WEATHER, 0)
    check_level_complaints(phone, 2)


@pytest.mark.phone(services=("notifications", "homescreen"))
def test_the_home_screen_is_told_of_every_app_that_is_updated(phone):
    start_with_weather(phone)
    paths = [str(APPLICATIONS / name) for name in entries()]
    for upgrading, method in ((True, "updatingStarted"), (False, "updatingFinished")):
        phone.homescreen.forget()
        phone.bramd.call("notifyRuntimeUpgrade", "b", upgrading)
        phone.daemon.log.expect(f"notifyRuntimeUpgrade: {str(upgrading).lower()}", "debug", DAEMON)
        wait_for(lambda: len(told_home_screen(phone)) >= len(paths), "a call for each app")
        assert sorted(told_home_screen(phone)) == [
            (method, [path.rsplit("/", 1)[1].removesuffix(".desktop"), "", "", path])
            for path in paths]


@pytest.mark.phone(services=("notifications", "homescreen"))
def test_the_home_screen_is_told_of_however_many_apps(phone):
    phone.start_daemon()
    paths = [APPLICATIONS / f"bramd_launcher_org_example_app{number:03}.desktop"
             for number in range(300)]
    for path in paths:
        path.write_text(f"[Desktop Entry]\nX-bramd-packageName={path.stem}\n", encoding="utf-8")
    phone.bramd.call("notifyRuntimeUpgrade", "b", True)
    wait_for(lambda: len(told_home_screen(phone)) >= len(paths), "a call for each app")
    assert [arguments[3] for _method, arguments in told_home_screen(phone)] == list(map(str, paths))


@pytest.mark.phone(services=("notifications", "homescreen"))
def test_the_home_screen_hears_nothing_without_apps(phone):
    start_beside_runtime(phone)
    phone.bramd.call("notifyRuntimeUpgrade", "b", True)
    # What the daemon sends on the session bus stays in order.
    phone.bramd.call("installFile", "s", str(download("weather")))
    phone.notifications.wait_for_notice()
    assert not told_home_screen(phone)
