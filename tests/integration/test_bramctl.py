"""bramctl on a phone on which all is well: what it does, and what it says of it."""

import json

import pytest

from phone.namespace import USER
from phone.runtime import DATA_ROOT
from phone.waiting import wait_for

from bramctl import NO_RUNTIME, NOT_CONFIRMED, REFUSED, bramctl, start
from daemonsteps import (claim_missing_settings_entries, expect_deaths, forgive_deaths,
                         start_beside_runtime)
from hostfiles import DOWNLOADS, download, entries, entry_path, traces
from launches import HOME_VOLUME, WEATHER, start_with_weather, started_intents, launched_packages

PAPERTRAIL = "org.example.papertrail"
SHARE_ONE = f"{PAPERTRAIL}/{PAPERTRAIL}.ShareOneActivity"
SHARE_MANY = f"{PAPERTRAIL}/{PAPERTRAIL}.ShareManyActivity"
METRONOME = "org.example.metronome"
APP_DATA = DATA_ROOT / "data/data" / WEATHER


@pytest.fixture(name="papertrail")
def papertrail_fixture(phone):
    start_beside_runtime(phone)
    bramctl("install", download("papertrail"), "--wait").done()
    phone.runtime.forget()
    return phone


def home_file(name, content=b"x"):
    path = DOWNLOADS / name
    path.write_bytes(content)
    return path


class TestTheRuntime:
    def test_it_is_started_and_stopped(self, phone):
        phone.start_daemon()
        status = bramctl("status").done("running\n").out
        assert "inactive (dead)" in status
        assert "9 (SDK 28), security patch 2021-05-05" in status

        bramctl("start").done("The Android runtime runs.")
        assert phone.unit.state() == "active"
        bramctl("start").done("already")
        assert bramctl("status", "--json").done().json() == {
            "daemon": "running",
            "runtime": {"state": "active", "subState": "running", "atBoot": False},
            "android": {"sdk": 28, "release": "9", "securityPatch": "2021-05-05"},
            "apps": 0,
        }

        bramctl("stop").done("has stopped")
        assert phone.unit.state() == "inactive"
        bramctl("stop").done("does not run (inactive)")
        forgive_deaths(phone)

    def test_it_is_restarted(self, phone):
        start_beside_runtime(phone)
        bramctl("restart").done("has stopped", "runs.")
        assert [name for name, _ in phone.unit.calls("StopUnit")] == ["StopUnit"]
        forgive_deaths(phone)
        assert phone.unit.state() == "active"

    def test_one_that_has_failed_is_started_anew(self, phone):
        phone.start_daemon()
        phone.unit.show("failed", "failed")
        bramctl("start").done("The Android runtime runs.")

    def test_a_start_that_takes_too_long_is_not_confirmed(self, phone):
        phone.start_daemon()
        phone.unit.hold_activation(True)
        bramctl("start", "--timeout", "1").failed(NOT_CONFIRMED, "activating", "bramctl status")
        phone.unit.hold_activation(False)
        phone.unit.wait_for_state("active")

    def test_a_runtime_that_cannot_start_is_reported(self, phone):
        phone.start_daemon()
        phone.unit.set_command(["/bin/false"], "/run/phone/nobody")
        bramctl("start").failed(NO_RUNTIME, "has failed", "journalctl -u umbravm")

    def test_its_start_at_boot_is_switched(self, phone):
        phone.start_daemon()
        bramctl("autostart", "on").done("starts at boot")
        assert bramctl("status", "--json").json()["runtime"]["atBoot"] is True
        bramctl("autostart", "off").done("only when it is needed")
        assert bramctl("status", "--json").json()["runtime"]["atBoot"] is False

    def test_its_version_is_told(self, phone):
        phone.start_daemon()
        bramctl("version").done("bramctl  0.1.0\n", "Android  9 (SDK 28)")
        assert bramctl("version", "--json").json()["android"]["sdk"] == 28

    def test_the_disk_use_is_measured(self, phone):
        phone.start_daemon()
        APP_DATA.mkdir(parents=True)
        (APP_DATA / "map").write_bytes(b"x" * 5_000_000)
        bramctl("usage").done("5.0 MB")
        assert bramctl("usage", "--json").json()["bytes"] > 5_000_000


class TestInstalling:
    def test_an_app_is_installed_from_a_stopped_phone_and_removed(self, phone):
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

    def test_without_waiting_only_the_hand_over_is_confirmed(self, phone):
        start_beside_runtime(phone)
        shown = bramctl("install", download("weather")).done("bramd has taken", "A notice tells")
        assert f"{WEATHER} is installed." not in shown.out
        phone.notifications.wait_for_notice()

    def test_paths_are_made_absolute(self, phone):
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

    def test_an_update_is_noticed(self, phone):
        start_beside_runtime(phone)
        bramctl("install", download("metronome-1"), "--wait").done(f"{METRONOME} is installed.")
        bramctl("install", download("metronome-2"), "--wait").done(f"{METRONOME} is updated.")
        assert bramctl("list", "--json").json() == [{
            "package": METRONOME, "name": "Metronome", "version": "2.0", "hidden": False,
            "launchers": [f"{METRONOME}.MainActivity"], "opens": []}]

    def test_an_app_that_the_runtime_refuses_is_not_confirmed(self, phone):
        start_beside_runtime(phone)
        bramctl("install", download("starmap"), "--wait", "--timeout", "2").failed(
            NOT_CONFIRMED, "has not appeared in time", "A notice")
        phone.notifications.wait_for_notice()

    def test_an_older_version_is_not_confirmed(self, phone):
        start_beside_runtime(phone)
        bramctl("install", download("metronome-2"), "--wait").done()
        bramctl("install", download("metronome-1"), "--wait", "--timeout", "1").failed(
            NOT_CONFIRMED, "was there before")

    def test_several_are_installed_even_if_one_is_bad(self, phone):
        start_beside_runtime(phone)
        bad = home_file("bad.apk", b"This is no archive")
        answer = bramctl("install", download("weather"), bad, download("metronome-1"), "--wait")
        answer.failed(REFUSED, "bad.apk is no Android package")
        assert [app["package"] for app in bramctl("list", "--json").json()] == [METRONOME, WEATHER]

    @pytest.mark.parametrize("name", ["game.xapk", "game.apks", "game.APKM"])
    def test_split_archives_are_refused(self, phone, name):
        phone.start_daemon()
        bramctl("install", home_file(name)).failed(REFUSED, "split into several packages")
        assert phone.unit.state() == "inactive"

    @pytest.mark.parametrize(("words", "says"), [
        ("/no/such.apk", "There is no file /no/such.apk."),
        ("/home", "no regular file"),
        ("https://example.org/a.apk", "download it first"),
    ])
    def test_what_is_no_file_is_refused(self, phone, words, says):
        phone.start_daemon()
        bramctl("install", words).failed(REFUSED, says)
        assert phone.unit.state() == "inactive"

    def test_a_runtime_that_dies_ends_the_wait(self, phone):
        start_beside_runtime(phone)
        phone.runtime.fault("package", "hang")
        apk = download("weather")
        output = DOWNLOADS / "output"
        process = start("install", str(apk), "--wait", output=output)
        wait_for(lambda: "runtime is active" in output.read_text("utf-8"), "the wait")
        phone.unit.kill_runtime()
        assert process.wait(30) == NO_RUNTIME
        assert "The Android runtime has failed, and org.example.weather is not installed." \
            in output.read_text("utf-8")
        expect_deaths(phone, 0)

    def test_an_app_that_is_not_there_is_not_removed(self, phone):
        phone.start_daemon()
        bramctl("remove", "org.example.nothing").failed(REFUSED, "bramctl list")
        assert phone.unit.state() == "inactive"


class TestOpening:
    def test_an_app_is_launched(self, phone):
        start_with_weather(phone)
        bramctl("launch", WEATHER).done("bramd has taken it", "Weather is to open")
        assert launched_packages(phone) == [WEATHER]

    def test_a_launcher_of_an_app_is_launched(self, phone):
        start_with_weather(phone)
        bramctl("launch", f"{WEATHER}/{WEATHER}.MainActivity").done()
        intent = started_intents(phone)[0]
        assert intent["action"] == "android.intent.action.MAIN"
        assert intent["componentClass"] == f"{WEATHER}.MainActivity"
        bramctl("launch", f"{WEATHER}/{WEATHER}.Other").failed(
            REFUSED, f"has no launcher {WEATHER}.Other but: {WEATHER}.MainActivity")

    def test_an_app_that_is_not_there_is_not_launched(self, phone):
        start_with_weather(phone)
        bramctl("launch", "org.example.nothing").failed(REFUSED, "bramctl list")
        assert not launched_packages(phone)

    def test_an_intent_carries_what_was_given(self, phone):
        start_with_weather(phone)
        bramctl("intent", "--action", "android.intent.action.VIEW", f"--data=/home/{USER}/a.pdf",
                "--type", "application/pdf", "--package", WEATHER, "--class", f"{WEATHER}.View",
                "--category", "android.intent.category.DEFAULT", "--extra", "title=a=b",
                "--extra-int", "page=-3", "--extra-bool", "night=true").done()
        assert started_intents(phone) == [{
            "action": "android.intent.action.VIEW", "data": f"file://{HOME_VOLUME}/a.pdf",
            "type": "application/pdf", "package": WEATHER, "componentPackage": WEATHER,
            "componentClass": f"{WEATHER}.View",
            "categories": ["android.intent.category.DEFAULT"],
            "extras": {"title": "a=b", "page": -3, "night": True}}]

    def test_settings_and_licenses_are_opened(self, phone):
        start_with_weather(phone)
        bramctl("open-settings", WEATHER).done("the settings of")
        bramctl("licenses").done("legal information")
        wait_for(lambda: len(started_intents(phone)) == 2, "both intents", 20)
        assert [intent["action"] for intent in started_intents(phone)] == [
            "android.settings.APPLICATION_DETAILS_SETTINGS", "android.settings.LEGAL_INFO"]
        assert started_intents(phone)[0]["data"] == f"package:{WEATHER}"


class TestSharing:
    def test_targets_are_listed(self, papertrail):
        del papertrail
        bramctl("targets").done(f"{SHARE_ONE}   File in Paper Trail    one      application/pdf "
                                "text/plain\n")
        assert bramctl("targets", "--json").json()[0] == {
            "target": SHARE_MANY, "package": PAPERTRAIL,
            "class": f"{PAPERTRAIL}.ShareManyActivity", "label": "Paper Trail",
            "caption": "Scan into Paper Trail", "multi": True, "mimetypes": ["image/*"]}

    def test_a_text_is_shared_with_a_title(self, papertrail):
        bramctl("share", "Buy", "milk", "--to", SHARE_ONE).done("has taken the text")
        assert started_intents(papertrail)[0]["extras"] == {
            "android.intent.extra.SUBJECT": "Buy milk", "android.intent.extra.TEXT": "Buy milk"}
        bramctl("share", "Buy milk", "--title", "List", "--to", SHARE_ONE).done()
        assert started_intents(papertrail)[1]["extras"]["android.intent.extra.SUBJECT"] == "List"

    def test_files_are_shared(self, papertrail):
        first, second = home_file("a.png", b"\x89PNG\r\n\x1a\n"), home_file("b.jpg", b"\xff\xd8\xff")
        bramctl("share", first, "--to", SHARE_MANY).done("has taken", str(first))
        bramctl("share", first, f"file://{second}", "--to", SHARE_MANY).done()
        volume = f"file://{HOME_VOLUME}/Downloads"
        one, two = started_intents(papertrail)
        assert (one["action"], one["type"]) == ("android.intent.action.SEND", "image/png")
        assert one["extras"] == {"android.intent.extra.STREAM": f"{volume}/a.png"}
        assert (two["action"], two["type"]) == ("android.intent.action.SEND_MULTIPLE", "image/*")
        assert two["extras"]["android.intent.extra.STREAM"] == [f"{volume}/a.png",
                                                                f"{volume}/b.jpg"]
        assert one["componentClass"] == f"{PAPERTRAIL}.ShareManyActivity"

    def test_a_text_file_is_shared_as_a_file(self, papertrail):
        bramctl("share", home_file("notes.txt", b"notes"), "--to", SHARE_ONE).done()
        intent = started_intents(papertrail)[0]
        assert intent["extras"] == {
            "android.intent.extra.STREAM": f"file://{HOME_VOLUME}/Downloads/notes.txt"}

    @pytest.mark.parametrize(("words", "says"), [
        (["{png}", "--to", SHARE_ONE], "does not take image/png but: application/pdf, text/plain"),
        (["{pdf}", "{pdf}", "--to", SHARE_ONE], "one file at a time"),
        (["Hello", "--to", SHARE_MANY], "does not take text/plain"),
        (["{pdf}", "Hello", "--to", SHARE_ONE], "There is no file Hello"),
        (["/no/such.pdf", "--to", SHARE_ONE], "There is no file /no/such.pdf"),
        (["/etc/passwd", "--to", SHARE_ONE], "The runtime does not see /etc/passwd"),
        (["Hello", "--to", "org.example.nothing/x"], "bramctl targets"),
    ])
    def test_what_an_app_does_not_take_is_not_shared(self, papertrail, words, says):
        files = {"png": home_file("a.png", b"\x89PNG\r\n\x1a\n"), "pdf": home_file("a.pdf", b"%PDF-")}
        bramctl("share", *(word.format(**files) for word in words)).failed(REFUSED, says)
        assert not started_intents(papertrail)


class TestManaging:
    def test_sizes_are_shown(self, phone):
        start_with_weather(phone)
        (APP_DATA / "cache").mkdir(parents=True, exist_ok=True)
        (APP_DATA / "cache/tiles").write_bytes(b"x" * 300)
        answer = bramctl("size", WEATHER, "--json").done().json()
        assert [app["package"] for app in answer] == [WEATHER]
        assert answer[0]["cache"] == phone.bramd.call("getAppSize", "s", WEATHER)[2] >= 300
        bramctl("size", WEATHER).done("CODE", " bytes\n")

    def test_of_an_unknown_app_no_size_is_shown(self, phone):
        start_with_weather(phone)
        answer = bramctl("size", "org.example.nothing", WEATHER)
        answer.failed(REFUSED, "knows no app org.example.nothing")
        assert WEATHER in answer.out

    def test_the_cache_is_cleared(self, phone):
        start_with_weather(phone)
        (APP_DATA / "cache").mkdir(parents=True, exist_ok=True)
        (APP_DATA / "cache/tiles").write_bytes(b"x" * 300)
        bramctl("clear-cache", WEATHER).done("Cleared the cache", "and has 0 bytes")
        assert not (APP_DATA / "cache/tiles").exists()

    @pytest.mark.parametrize(("words", "typed", "cleared"), [
        (["--yes"], "", True), ([], "y\n", True), ([], "n\n", False), ([], "", False)])
    def test_data_is_cleared_when_the_user_agrees(self, phone, words, typed, cleared):
        start_with_weather(phone)
        APP_DATA.mkdir(parents=True, exist_ok=True)
        (APP_DATA / "map").write_bytes(b"x")
        answer = bramctl("clear-data", WEATHER, *words, answer=typed)
        assert answer.status == (0 if cleared else REFUSED)
        assert (APP_DATA / "map").exists() is not cleared
        assert ("It cannot be brought back" in answer.err) is (not words)

    def test_a_running_app_is_stopped(self, phone):
        start_with_weather(phone)
        phone.bramd.call("launchApp", "s", WEATHER)
        bramctl("stop-app", WEATHER).done("bramd has asked the runtime")
        assert phone.runtime.control("state")["running"] == []

    def test_the_start_at_boot_is_shown_and_changed(self, phone):
        start_with_weather(phone)
        bramctl("boot", WEATHER).done("may not start")
        bramctl("boot", WEATHER, "on").done(f"{WEATHER} may start")
        assert phone.bramd.call("getAppStartOnBootup", "s", WEATHER) is True
        assert bramctl("boot", WEATHER, "--json").json() == {"package": WEATHER,
                                                             "startsAtBoot": True}
        bramctl("boot", WEATHER, "off").done("may not start")
        bramctl("boot", "org.example.nothing", "on").failed(REFUSED, "bramctl list")


class TestHiding:
    def test_an_app_is_hidden_and_shown_again(self, phone):
        start_with_weather(phone)
        bramctl("hide", WEATHER).done("on the list", "systemctl restart bramd")
        bramctl("hide", WEATHER).done("already")
        bramctl("hidden").done(f"{WEATHER}  /etc/bramd/app-blacklist")
        phone.stop_daemon()
        phone.start_daemon()
        phone.runtime.announce()
        entry = entry_path(WEATHER, f"{WEATHER}.MainActivity")
        wait_for(lambda: "NoDisplay=true" in entry.read_text("utf-8"), "the hidden entry")
        bramctl("list").done("not in the app grid")

        bramctl("unhide", WEATHER).done("no longer")
        bramctl("unhide", WEATHER).done("not on the list")
        bramctl("hidden").done("No app is on the list.")
        assert bramctl("hidden", "--json").json() == []


class TestDiagnosis:
    def test_a_sound_phone_is_well(self, papertrail):
        del papertrail
        bramctl("doctor").done("All is well.")
        assert bramctl("doctor", "--json").done().json() == []

    def test_leftovers_and_gaps_are_found(self, papertrail):
        del papertrail
        found = sorted(traces())
        icons = [path for path in found if path.endswith(".png")]
        (DOWNLOADS / "x").write_bytes(b"x")
        for path, content in ((icons[0], None), (icons[1], b"GIF89a")):
            with open(path, "wb") as file:
                file.write(content or b"")
        answer = bramctl("doctor")
        assert answer.status == REFUSED
        assert f"The icon {icons[0]} is no PNG file." in answer.out
        assert f"The icon {icons[1]} is no PNG file." in answer.out
        findings = bramctl("doctor", "--json").json()
        assert all(set(finding) == {"finding", "advice"} for finding in findings)

    def test_signals_are_shown_as_they_come(self, phone):
        start_with_weather(phone)
        output, lines = DOWNLOADS / "text", DOWNLOADS / "json"
        monitors = [start("monitor", output=output), start("monitor", "--json", output=lines)]
        try:
            for path in (output, lines):
                wait_for(lambda path=path: "active" in path.read_text("utf-8"), "the first lines")
            phone.bramd.call("setAppStartOnBootup", "sb", WEATHER, True)
            phone.bramd.call("launchApp", "s", WEATHER)
            phone.bramd.call("forceStopApp", "s", WEATHER)
            phone.stop_daemon()
            phone.stop_runtime()
            for path in (output, lines):
                wait_for(lambda path=path: "inactive" in path.read_text("utf-8"),
                         lambda path=path: f"the runtime's end in {path.read_text('utf-8')}")
        finally:
            for process in monitors:
                process.terminate()
                process.wait(10)
        assert [line.split(" ", 1)[1] for line in output.read_text("utf-8").splitlines()] == [
            "bramd running", "runtime active", f"appStartOnBootupChanged {WEATHER} true",
            f"appClosed {WEATHER}", "bramd not running", "runtime deactivating",
            "runtime inactive"]
        objects = [json.loads(line) for line in lines.read_text("utf-8").splitlines()]
        assert objects[2]["signal"] == "appStartOnBootupChanged"
        assert objects[2]["arguments"] == [WEATHER, True]

    def test_a_report_has_everything(self, papertrail):
        del papertrail
        bramctl("bugreport").done("== Versions", "== Runtime\nactive", "== Findings\n(none)",
                                  PAPERTRAIL, "== Journal")
