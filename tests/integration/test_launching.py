"""Starting apps and pages of the runtime from the host."""

from pathlib import Path

import pytest

from gi.repository import GLib

from phone.daemon import SERVICE
from phone.runtime import CONTROL
from phone.waiting import wait_for

from daemonsteps import (DAEMON, connected_line, expect_deaths, forgive_deaths,
                         start_beside_runtime, start_runtime, wait_until_connected)
from hostfiles import download
from launches import (ADDRESSES, EVERY_LEVEL, LAUNCH_PACKAGE, WEATHER, check_level_complaints,
                      launched_packages, looks, start_with_weather, started_intents)
from parcels import ADD_LAUNCHER, launcher
from texts import ENGLISH

MAIN = "android.intent.action.MAIN"
VIEW = "android.intent.action.VIEW"
SETTINGS = "com.android.settings"
INSTALL_PACKAGE = 2
NEW_TASK_ON_HOME = 0x10004000
NEW_CLEAR_TASK = 0x10008000


def launch(phone, action="", data="", kind="", package="", activity="", category="", extras=None):
    phone.bramd.call("launchIntent", "ssssssa{sv}", action, data, kind, package, activity, category,
                     extras or {})


def start_launch(phone, action, package=""):
    """Like launch() of a package's main activity, but does not wait for the reply."""
    return phone.bramd.start_call("launchIntent", "ssssssa{sv}", action, "", "", package,
                                  f"{package}.Main", "", {})


def carried_out(phone):
    """The action of every start, and the names of the other calls that launches make, in order."""
    found = []
    for record in phone.runtime.transactions():
        if record.get("method") == "startActivity":
            found.append(record["decoded"]["intent"]["action"])
        elif record.get("method") in ("hasWindow", "launchPackage"):
            found.append(record["method"])
    return found


def starting_notice(name):
    return ENGLISH["bramd-launch_umbra_to_start_android_app"].replace("%1", name)


def shown(phone):
    return [text for notice in phone.notifications.notices()
            for text in (notice["summary"], notice["body"]) if text.startswith("Android")]


def not_found(package):
    return f'Window for "{package}" not yet found. Sleeping 500ms'


def test_apps_are_launched_at_once_while_the_runtime_runs(phone):
    start_with_weather(phone)
    phone.bramd.call("launchApp", "s", WEATHER)
    phone.daemon.log.expect(f'Launching "{WEATHER}"', "debug", DAEMON)
    assert launched_packages(phone) == [WEATHER]
    assert phone.runtime.control("state")["running"] == [WEATHER]
    assert not phone.notifications.notices()


def test_launches_wait_for_a_stopped_runtime_in_order(phone):
    start_with_weather(phone)
    phone.stop_runtime()
    forgive_deaths(phone)
    packages = [WEATHER, "org.example.second", "org.example.third"]
    for package in packages:
        phone.bramd.call("launchApp", "s", package)
        phone.daemon.log.expect(f'Starting Umbra to launch "{package}"', "debug", DAEMON)
    phone.notifications.wait_for_notice(3)
    assert shown(phone) == [starting_notice("Weather"), starting_notice(""), starting_notice("")]
    wait_for(lambda: len(launched_packages(phone)) == 3, "three launches", 30)
    assert launched_packages(phone) == packages
    for package, left in zip(packages, (2, 1, 0)):
        phone.daemon.log.expect(f'Launching  "{package}"  ( {left}  more in queue)', "debug",
                                DAEMON)


def test_an_apps_name_is_shown_as_the_app_spells_it(phone):
    start_beside_runtime(phone)
    package = "org.example.quiz"
    phone.runtime.call_launcher(ADD_LAUNCHER, launcher(package, f"{package}.Main", "<b>Q&A</b> %1"))
    phone.stop_runtime()
    forgive_deaths(phone)
    phone.bramd.call("launchApp", "s", package)
    assert phone.notifications.wait_for_notice()["body"] == starting_notice("<b>Q&A</b> %1")


@pytest.mark.parametrize(("method", "signature", "arguments"), [
    ("launchApp", "s", (WEATHER,)),
    ("launchIntent", "ssssssa{sv}", ("", "", "", WEATHER, "", "", {})),
    ("openAppSettings", "s", (WEATHER,)),
    ("viewLicenses", "", ()),
    ("share", "a{sv}", ({"resources": GLib.Variant("as", ["/home/a.jpg"]),
                         "selectedTransferMethodInfo": GLib.Variant(
                             "a{sv}", {"methodId": GLib.Variant("s", f"{WEATHER}/Main")})},)),
])
def test_every_launch_starts_a_stopped_runtime_and_says_so(phone, method, signature, arguments):
    phone.start_daemon()
    phone.bramd.call(method, signature, *arguments)
    notice = phone.notifications.wait_for_notice()
    assert (notice["summary"], notice["body"]) == ("", starting_notice(""))
    assert notice["hints"] == {"image-path": "icon-s-android", "transient": True}
    wait_for(lambda: launched_packages(phone) or started_intents(phone), "the launch", 30)


def test_launches_come_before_package_requests(phone):
    phone.start_daemon()
    phone.bramd.call("installFile", "s", str(download("weather")))
    phone.bramd.call("launchApp", "s", WEATHER)
    installed = phone.runtime.wait_for_transaction("umbra", INSTALL_PACKAGE, timeout=30)
    assert [record["code"] for record in phone.runtime.transactions("umbra")
            if record["code"] in (LAUNCH_PACKAGE, installed["code"])] == [LAUNCH_PACKAGE,
                                                                          INSTALL_PACKAGE]


def test_a_launch_made_during_the_wait_for_a_window_comes_after_it(phone):
    start_with_weather(phone)
    phone.runtime.fault("SurfaceFlinger", "short", value=0, count=2)
    results = [phone.bramd.start_call("launchIntent", "ssssssa{sv}", "", "", "", package, activity,
                                      "", {})
               for package, activity in ((WEATHER, f"{WEATHER}.Main"), ("", ""))]
    wait_for(lambda: all(results), "both replies")
    assert results == [[None], [None]]
    calls = [record["service"] for record in phone.runtime.transactions()
             if record["service"] in ("activity", "SurfaceFlinger")]
    assert calls == ["activity", *["SurfaceFlinger"] * 3, "activity"]


def test_a_runtime_that_dies_during_the_wait_for_a_window_is_launched_again(phone):
    start_with_weather(phone)
    since = phone.daemon.log.mark()
    phone.runtime.fault("SurfaceFlinger", "die")
    launch(phone, package=WEATHER)
    phone.unit.wait_for_state("failed")
    expect_deaths(phone, since)
    phone.runtime.forget()
    launch(phone, package=WEATHER)
    phone.notifications.wait_for_notice()
    start_runtime(phone)
    wait_for(lambda: looks(phone), "the second launch")
    assert len(started_intents(phone)) == 1


def test_a_launch_is_announced_without_a_catalogue_too(phone):
    installed = Path("/usr/share/translations")
    set_aside = installed.rename("/usr/share/translations.aside")
    try:
        phone.start_daemon()
        phone.bramd.call("launchApp", "s", WEATHER)
        notice = phone.notifications.wait_for_notice()
        assert notice["body"] == "bramd-launch_umbra_to_start_android_app"
    finally:
        set_aside.rename(installed)


@pytest.mark.parametrize("late", ["umbra", "package"])
def test_no_launch_is_stranded_by_the_service_that_comes_last(phone, late):
    phone.start_daemon()
    phone.unit.set_command(phone.runtime.command(hold=[late]), CONTROL)
    phone.bramd.call("launchApp", "s", WEATHER)
    wait_until_connected(phone, services={"umbra", "package", "activity"} - {late})
    assert not launched_packages(phone)
    phone.runtime.release(late)
    wait_for(lambda: launched_packages(phone) == [WEATHER], "the launch", 30)


def test_intents_wait_for_the_activity_manager_in_order(phone):
    phone.start_daemon()
    phone.unit.set_command(phone.runtime.command(hold=["activity"]), CONTROL)
    launch(phone, action="org.example.FIRST")
    launch(phone, action="org.example.SECOND")
    phone.notifications.wait_for_notice(2)
    assert shown(phone) == [starting_notice("")] * 2
    wait_until_connected(phone, services=("umbra", "package"))
    assert not started_intents(phone)
    phone.runtime.release("activity")
    wait_for(lambda: phone.daemon.log.count(connected_line("activity")), "activity", 30)
    wait_for(lambda: len(started_intents(phone)) == 2, "both intents", 30)
    assert started_intents(phone) == [{"action": "org.example.FIRST"},
                                      {"action": "org.example.SECOND"}]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_empty_arguments_start_a_main_intent_without_a_window_wait(phone, sdk):
    del sdk
    start_beside_runtime(phone)
    launch(phone)
    assert started_intents(phone) == [{"action": MAIN, "flags": NEW_TASK_ON_HOME}]
    assert not looks(phone)
    phone.daemon.log.expect('Launching intent "" "" "" "" ""', "debug", DAEMON)
    phone.daemon.log.expect(f'Launching  "{MAIN}" ""', "debug", DAEMON)
    check_level_complaints(phone, 1)


def test_a_class_without_a_package_is_ignored(phone):
    start_beside_runtime(phone)
    launch(phone, activity="org.example.weather.MainActivity")
    assert started_intents(phone) == [{"action": MAIN, "flags": NEW_TASK_ON_HOME}]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_every_argument_reaches_the_runtime(phone, sdk):
    del sdk
    start_with_weather(phone)
    launch(phone, VIEW, "https://example.org/a?b=c", "text/html", WEATHER, f"{WEATHER}.Main",
           "android.intent.category.BROWSABLE",
           {"text": GLib.Variant("s", "Grüße"), "number": GLib.Variant("i", -5),
            "yes": GLib.Variant("b", True)})
    assert started_intents(phone) == [{
        "action": VIEW, "data": "https://example.org/a?b=c", "type": "text/html",
        "package": WEATHER, "componentPackage": WEATHER, "componentClass": f"{WEATHER}.Main",
        "categories": ["android.intent.category.BROWSABLE"],
        "extras": {"text": "Grüße", "number": -5, "yes": True}}]
    check_level_complaints(phone, 1)


def test_host_paths_become_the_runtimes_addresses(phone):
    start_beside_runtime(phone)
    for path in ADDRESSES:
        launch(phone, VIEW, path, "application/octet-stream")
    assert {path: intent["data"] for path, intent in zip(ADDRESSES, started_intents(phone))
            } == ADDRESSES


def test_one_look_is_enough_for_a_window_that_is_there(phone):
    start_with_weather(phone)
    launch(phone, package=WEATHER, activity=f"{WEATHER}.Main")
    assert looks(phone) == [WEATHER]
    assert not phone.daemon.log.count(not_found(WEATHER))


def test_a_window_is_found_at_the_fourth_look(phone):
    start_with_weather(phone)
    phone.runtime.fault("SurfaceFlinger", "short", value=0, count=3)
    launch(phone, package=WEATHER, activity=f"{WEATHER}.Main")
    assert looks(phone) == [WEATHER] * 4
    assert phone.daemon.log.count(not_found(WEATHER)) == 3


def test_calls_during_a_window_wait_are_served_after_it_in_order(phone):
    start_with_weather(phone)
    phone.runtime.fault("SurfaceFlinger", "short", value=0, count=9)
    first = start_launch(phone, "org.example.FIRST", WEATHER)
    wait_for(lambda: looks(phone), "the first look")
    second = start_launch(phone, "org.example.SECOND", WEATHER)
    app = phone.bramd.start_call("launchApp", "s", WEATHER)
    third = start_launch(phone, "org.example.THIRD")
    assert phone.system_bus.has_owner(SERVICE)  # the bus has passed on what was sent before
    assert len(looks(phone)) < 10
    wait_for(lambda: all((first, second, app, third)), "four replies", 30)
    assert carried_out(phone) == [
        "org.example.FIRST", *["hasWindow"] * 10, "org.example.SECOND", "hasWindow",
        "launchPackage", "org.example.THIRD"]


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_app_settings_open_and_ten_looks_are_the_most(phone, sdk):
    del sdk
    start_beside_runtime(phone)
    phone.bramd.call("openAppSettings", "s", WEATHER)
    phone.daemon.log.expect(f'Opening app settings for "{WEATHER}"', "debug", DAEMON)
    assert started_intents(phone) == [{
        "action": "android.settings.APPLICATION_DETAILS_SETTINGS", "package": SETTINGS,
        "data": f"package:{WEATHER}", "flags": NEW_CLEAR_TASK}]
    assert looks(phone) == [SETTINGS] * 10
    assert phone.daemon.log.count(not_found(SETTINGS)) == 10
    check_level_complaints(phone, 1)


def test_the_licenses_open_even_without_a_compositor(phone):
    phone.start_runtime(hold=["SurfaceFlinger"])
    phone.start_daemon()
    wait_until_connected(phone)
    phone.bramd.call("viewLicenses")
    phone.daemon.log.expect("Opening legal information settings page", "debug", DAEMON)
    assert started_intents(phone) == [{"action": "android.settings.LEGAL_INFO",
                                       "package": SETTINGS, "flags": NEW_CLEAR_TASK}]
    assert not looks(phone)
