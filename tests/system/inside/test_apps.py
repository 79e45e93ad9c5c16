"""Apps come and go, at the wish of the phone's user."""

import re
import shutil

import pytest
from gi.repository import GLib

from hostfiles import (APPLICATIONS, ICONS, INCOMING, PACKAGED, SHARING, entries, icon_path,
                       owner_and_mode, read_json, settings_path, traces)
from launches import launched_packages, started_intents
from parcels import ADD_LAUNCHER, COMPLETE, launcher
from phone.waiting import wait_for

from realphone import DAEMON_UNIT, PATIENCE_S, USER, run, show
from steps import (ANNOUNCED, download, install, request, start_runtime, wait_for_entries,
                   wait_until_connected)

PAPERTRAIL = "org.example.papertrail"
WEATHER = "org.example.weather"


def test_an_install_starts_the_runtime_and_brings_the_app_to_the_host(phone):
    since = phone.daemon.log.mark()
    notice = install(phone, "papertrail")
    assert notice["summary"].startswith("App installed: ")
    assert phone.unit.state() == "active"
    wait_until_connected(phone, since)
    wait_for_entries(5)
    assert owner_and_mode(INCOMING / "papertrail.apk") == (0, 0, 0o644)
    launcher = next(APPLICATIONS.glob("bramd_launcher_*.desktop"))
    assert owner_and_mode(launcher) == (0, 0, 0o644)
    assert owner_and_mode(icon_path(launcher)) == (0, 0, 0o644)
    page = read_json(settings_path(launcher))["entries"][0]["params"]["properties"]
    assert page == {"packageName": PAPERTRAIL, "packageVersion": "1.4"}
    assert PAPERTRAIL in read_json(SHARING)
    run("desktop-file-validate", launcher)
    database = APPLICATIONS / "mimeinfo.cache"
    wait_for(lambda: "bramd_handler_org_example_papertrail" in database.read_text("utf-8"),
             "the handler in the desktop database", PATIENCE_S)

    assert request("removeFile", launcher)
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)
    wait_for(lambda: "bramd_" not in database.read_text("utf-8"), "the database", PATIENCE_S)


def test_an_app_is_launched_and_shared_with(phone):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    phone.runtime.forget()
    phone.bramd.call("launchApp", "s", WEATHER)
    wait_for(lambda: launched_packages(phone) == [WEATHER], "the launch", PATIENCE_S)

    configuration = {
        "mimeType": GLib.Variant("s", "image/jpeg"),
        "resources": GLib.Variant("as", [f"/home/{USER}/Pictures/trip.jpg"]),
        "selectedTransferMethodInfo": GLib.Variant("a{sv}", {
            "methodId": GLib.Variant("s", f"{WEATHER}/{WEATHER}.ShareActivity")})}
    phone.bramd.call("share", "a{sv}", configuration)
    (intent,) = wait_for(lambda: started_intents(phone), "the share", PATIENCE_S)
    assert intent["action"] == "android.intent.action.SEND"
    stream = intent["extras"]["android.intent.extra.STREAM"]
    assert stream.startswith("file:///storage/") and stream.endswith("/Pictures/trip.jpg")


def test_an_app_of_a_host_package_takes_the_package_with_it(phone, tmp_path):
    start_runtime(phone)
    name = f"lagoon-apk-{WEATHER}"
    package = tmp_path / "tree"
    staged = package / PACKAGED.relative_to("/") / f"{WEATHER}.apk"
    staged.parent.mkdir(parents=True)
    shutil.copyfile(download("weather"), staged)
    (package / "DEBIAN").mkdir()
    (package / "DEBIAN/control").write_text(
        f"Package: {name}\nVersion: 1.0\nArchitecture: all\nMaintainer: Nobody <nobody@localhost>\n"
        "Description: Weather\n", encoding="utf-8")
    run("dpkg-deb", "--build", "--root-owner-group", package, tmp_path / "weather.deb")
    run("dpkg", "--install", tmp_path / "weather.deb")
    assert phone.bramd.call("installFile", "s", str(PACKAGED / f"{WEATHER}.apk"))
    wait_for_entries(1)
    assert not phone.notifications.notices()

    assert request("removeFile", WEATHER)
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)
    wait_for(lambda: run("dpkg-query", "--show", "--showformat=${db:Status-Status}", name,
                         check=False).stdout != "installed", f"the end of {name}", PATIENCE_S)
    assert not (PACKAGED / f"{WEATHER}.apk").exists()


def test_three_hundred_apps_are_announced(phone):
    """They are gone together when the runtime no longer has them after a start of the daemon."""
    start_runtime(phone)
    packages = [f"org.example.number{number}" for number in range(300)]
    for package in packages:
        announced = launcher(package, f"{package}.MainActivity", package, icon=bytes(10000))
        assert phone.runtime.call_launcher(ADD_LAUNCHER, announced) == (0, b"")
    assert phone.runtime.call_launcher(COMPLETE) == (0, b"")
    assert len(entries()) == len(list(ICONS.glob("*.png"))) == len(packages)
    phone.stop_daemon()
    since = phone.daemon.log.mark()
    phone.start_daemon()
    wait_until_connected(phone, since)
    wait_for(lambda: not traces(), lambda: f"the end of {len(traces())} files", PATIENCE_S)


def is_removed(texts):
    """Whether these log lines tell of the removal and of its end."""
    begin = f'onRemovePackage: "{PAPERTRAIL}"'
    return begin in texts and ANNOUNCED in texts[texts.index(begin):]


@pytest.mark.parametrize("directory", [INCOMING, ICONS])
def test_a_full_disk_spoils_nothing_that_was_there(phone, directory):
    """The directory is a small file system of its own, with a little less room than is needed."""
    phone.stop_daemon()
    run("mount", "-t", "tmpfs", "-o", "size=16k,mode=755", "tmpfs", directory)
    try:
        phone.start_daemon()
        start_runtime(phone)
        if directory == ICONS:
            assert request("installFile", download("papertrail"))
            phone.daemon.log.expect(re.compile('Unable to write icon: .*'), timeout=PATIENCE_S)
            wait_for_entries(5)
            since = phone.daemon.log.mark()
            assert request("removeFile", PAPERTRAIL)
            wait_for(lambda: is_removed(phone.daemon.log.texts(since)), "the end of the app",
                     PATIENCE_S)
            assert not entries()
            # Each file that had no room is told of, when it is to be written and when it is to go.
            for text in ("Unable to write icon: .*", "Unable to write sharing file",
                         f'Could not remove: "{ICONS}/.*\\.png"'):
                phone.daemon.log.claim_all(re.compile(text), "warning")
        else:
            assert not request("installFile", download("papertrail"))
            phone.daemon.log.expect(re.compile("Could not copy incoming file: .*"))
        # No piece of a file, which would have a name of its own at first.
        assert {path.suffix for path in directory.iterdir()} <= {".png", ".json"}
        assert show(DAEMON_UNIT, "ActiveState") == "active"
    finally:
        phone.stop_daemon()
        run("umount", directory)
