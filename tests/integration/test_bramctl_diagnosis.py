"""bramctl helps to find out what is wrong."""

import json
import signal

from phone.waiting import wait_for

from bramctl import DONE, REFUSED, bramctl, start
from hostfiles import DOWNLOADS, traces
from launches import WEATHER, start_with_weather

PAPERTRAIL = "org.example.papertrail"


def test_a_sound_phone_is_well(papertrail):
    del papertrail
    bramctl("doctor").done("All is well.")
    assert bramctl("doctor", "--json").done().json() == []


def test_leftovers_and_gaps_are_found(papertrail):
    del papertrail
    found = sorted(traces())
    icons = [path for path in found if path.endswith(".png")]
    for path, content in ((icons[0], None), (icons[1], b"GIF89a")):
        with open(path, "wb") as file:
            file.write(content or b"")
    answer = bramctl("doctor")
    assert answer.status == REFUSED
    assert f"The icon {icons[0]} is no PNG file." in answer.out
    assert f"The icon {icons[1]} is no PNG file." in answer.out
    findings = bramctl("doctor", "--json").json()
    assert all(set(finding) == {"finding", "advice"} for finding in findings)


def test_signals_are_shown_as_they_come(phone):
    start_with_weather(phone)
    output, lines = DOWNLOADS / "text", DOWNLOADS / "json"
    monitors = [start("monitor", output=output), start("monitor", "--json", output=lines)]
    try:
        for path in (output, lines):
            wait_for(lambda path=path: "active" in path.read_text("utf-8"), "the first lines")
        phone.bramd.call("setAppStartOnBootup", "sb", WEATHER, True)
        phone.bramd.call("launchApp", "s", WEATHER)
        phone.bramd.call("forceStopApp", "s", WEATHER)
        for path in (output, lines):
            wait_for(lambda path=path: "appClosed" in path.read_text("utf-8"), "the app's end")
        phone.stop_daemon()
        phone.stop_runtime()
        for path in (output, lines):
            wait_for(lambda path=path: "inactive" in path.read_text("utf-8"),
                     lambda path=path: f"the runtime's end in {path.read_text('utf-8')}")
        for process, number in zip(monitors, (signal.SIGINT, signal.SIGTERM)):
            process.send_signal(number)
            assert process.wait(10) == DONE
    finally:
        for process in monitors:
            process.kill()
            process.wait()
    assert [line.split(" ", 1)[1] for line in output.read_text("utf-8").splitlines()] == [
        "bramd running", "runtime active", f"appStartOnBootupChanged {WEATHER} true",
        f"appClosed {WEATHER}", "bramd not running", "runtime deactivating",
        "runtime inactive"]
    objects = [json.loads(line) for line in lines.read_text("utf-8").splitlines()]
    assert objects[2]["signal"] == "appStartOnBootupChanged"
    assert objects[2]["arguments"] == [WEATHER, True]


def test_a_full_disk_ends_the_monitor(phone):
    phone.start_daemon()
    process = start("monitor", output="/dev/full")
    assert process.wait(10) == REFUSED


def test_a_report_has_everything(papertrail):
    del papertrail
    bramctl("bugreport").done("== Versions", "Android  9 (SDK 28)", "== bramd\nrunning",
                              "== Runtime\nactive", "== Findings\n(none)", PAPERTRAIL,
                              "== Journal")
    report = bramctl("bugreport", "--json").done().json()
    assert set(report) == {"versions", "bramd", "runtime", "findings", "apps", "journal"}
    assert (report["bramd"], report["runtime"], report["findings"]) == (["running"], ["active"], [])
    assert report["apps"] == bramctl("list", "--json").json()
    assert [app["package"] for app in report["apps"]] == [PAPERTRAIL]


def test_a_report_is_made_without_a_bus(phone):
    del phone
    bramctl("bugreport", DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere").done(
        "Android  not known", "== bramd\nnot known, because the system bus cannot be reached",
        "== Runtime\nnot known", "The system bus cannot be reached.")
