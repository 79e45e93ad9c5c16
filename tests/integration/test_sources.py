"""Preloaded, partner-space and packaged apps, and requests made while the runtime is down."""

import re

import pytest

from phone.waiting import wait_for

from daemonsteps import (DAEMON, start_beside_runtime, start_runtime, wait_until_announced,
                         wait_until_connected)
from hostfiles import (INCOMING, PACKAGED, PARTNER_SPACE, APKS, download, entry_path, entries,
                       read_entry, traces)
from packagerequests import (check_install, install_paths, installs, removals, removed_packages)

WEATHER = "org.example.weather"
WEATHER_ENTRY = entry_path(WEATHER, f"{WEATHER}.MainActivity")
STAGED_WEATHER = "/data/xrs-staging/app/incoming/weather.apk"
RPM = "lagoon-apk-org.example.weather"
RPM_ID = f"{RPM};1.0;noarch;installed"


def wait_for_entry():
    wait_for(WEATHER_ENTRY.exists, "the desktop entry")


def test_a_preloaded_app_comes_silently(phone):
    start_beside_runtime(phone)
    assert phone.bramd.call("installPreloadFile", "s", str(download("weather"))) is True
    wait_for_entry()
    check_install(phone.runtime, STAGED_WEATHER, silent=True)
    # A result could only come now, before that of an app that is not silent.
    assert phone.bramd.call("installFile", "s", str(download("papertrail")))
    phone.notifications.wait_for_notice()
    assert len(phone.notifications.notices()) == 1
    assert "NoDisplay" not in read_entry(WEATHER_ENTRY)


def test_a_partner_space_app_comes_silently_and_is_marked(phone):
    PARTNER_SPACE.mkdir(parents=True)
    start_beside_runtime(phone)
    apk = download("weather", f"{WEATHER}.apk")
    assert phone.bramd.call("installPartnerSpaceFile", "s", str(apk)) is True
    wait_for_entry()
    marker = PARTNER_SPACE / apk.name
    assert marker.read_bytes() == b""
    check_install(phone.runtime, f"/data/xrs-staging/app/incoming/{apk.name}", silent=True)
    entry = read_entry(WEATHER_ENTRY)
    assert entry["NoDisplay"] == "true"
    assert entry["Categories"] == "X-TidewaterPartnerSpace"
    assert not phone.notifications.notices()

    assert phone.bramd.call("removeFile", "s", f"{WEATHER}.apk") is True
    assert not marker.exists()
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")


def test_a_numbered_partner_space_marker_outlives_the_removal(phone):
    PARTNER_SPACE.mkdir(parents=True)
    start_beside_runtime(phone)
    apk = download("weather", "a-12.apk")
    assert phone.bramd.call("installPartnerSpaceFile", "s", str(apk)) is True
    assert (PARTNER_SPACE / "a-12.apk").exists()
    (PARTNER_SPACE / "a.apk").touch()
    assert phone.bramd.call("removeFile", "s", "a-12.apk") is True
    assert (PARTNER_SPACE / "a-12.apk").exists()
    assert not (PARTNER_SPACE / "a.apk").exists()


def test_a_packaged_app_comes_silently(phone):
    start_beside_runtime(phone)
    packaged = PACKAGED / "weather.apk"
    packaged.write_bytes((APKS / "weather.apk").read_bytes())
    assert phone.bramd.call("installFile", "s", str(packaged)) is True
    wait_for_entry()
    check_install(phone.runtime, STAGED_WEATHER, silent=True)
    assert not phone.notifications.notices()


@pytest.mark.phone(services=["notifications", "packagekit"])
class TestPackagedApp:
    """An app that came to the phone as an RPM package."""

    @pytest.fixture(autouse=True)
    def packaged(self, phone):
        phone.start_daemon()
        phone.packagekit.install(RPM, RPM_ID)
        (PACKAGED / f"{WEATHER}.apk").write_bytes((APKS / "weather.apk").read_bytes())

    def test_its_package_goes_with_the_app(self, phone):
        assert phone.bramd.call("removeFile", "s", f"/x/y/{WEATHER}.apk") is True
        phone.daemon.log.expect(f"Requesting uninstall of RPM ' \"{RPM}\" ' from PackageKit", "debug",
                                DAEMON)
        wait_for(lambda: not phone.packagekit.installed(), "the removal of the package")
        calls = [call for call in phone.packagekit.transaction_calls() if call[0] != "SetHints"]
        assert calls == [("Resolve", f"4 {RPM}"),
                         ("RemovePackages", f"2 {RPM_ID} False False")]
        phone.unit.wait_for_state("active")
        wait_for(lambda: removals(phone.runtime), "the removal from the runtime")
        assert removed_packages(phone.runtime) == [WEATHER]

    def test_its_package_goes_with_the_apps_desktop_entry(self, phone):
        start_runtime(phone)
        assert phone.bramd.call("installFile", "s", str(PACKAGED / f"{WEATHER}.apk")) is True
        wait_for_entry()
        assert phone.bramd.call("removeFile", "s", str(WEATHER_ENTRY)) is True
        wait_for(lambda: not phone.packagekit.installed(), "the removal of the package")
        wait_for(lambda: not traces(), lambda: f"the end of {traces()}")

    def test_other_packages_are_not_asked_for(self, phone):
        assert phone.bramd.call("removeFile", "s", "org.example.other") is True
        assert not phone.packagekit.transaction_calls()

    def test_a_package_that_is_not_installed_is_not_removed(self, phone):
        (PACKAGED / "org.example.gone.apk").touch()
        assert phone.bramd.call("removeFile", "s", "org.example.gone") is True
        wait_for(phone.packagekit.transaction_calls, "the question for the package")
        assert phone.bramd.call("removeFile", "s", WEATHER) is True
        wait_for(lambda: not phone.packagekit.installed(), "the removal of the other package")
        removals_asked = [call for call in phone.packagekit.transaction_calls()
                          if call[0] == "RemovePackages"]
        assert len(removals_asked) == 1

    def test_an_error_of_packagekit_is_only_logged(self, phone):
        phone.packagekit.fail("Resolve", 4, "no such thing")
        assert phone.bramd.call("removeFile", "s", WEATHER) is True
        phone.daemon.log.expect(
            re.compile(r"Error resolving package:  .*ErrorInternalError.* .*no such thing.*"),
            "debug", DAEMON)
        phone.packagekit.fail("RemovePackages", 4, "not now")
        assert phone.bramd.call("removeFile", "s", WEATHER) is True
        phone.daemon.log.expect(
            re.compile(r"Error uninstalling package:  .*ErrorInternalError.* .*not now.*"),
            "debug", DAEMON)


class TestWhileTheRuntimeIsDown:
    """Requests wait until the runtime's services are reached, in their order."""

    @pytest.fixture(autouse=True)
    def held_back(self, phone):
        phone.start_daemon()
        phone.unit.hold_activation(True)

    def let_it_come_up(self, phone):
        phone.unit.hold_activation(False)
        wait_until_connected(phone)
        wait_until_announced(phone)

    def test_a_file_offered_twice_is_installed_once(self, phone):
        apk = download("weather")
        assert phone.bramd.call("installFile", "s", str(apk)) is True
        phone.daemon.log.expect('Umbra VM is "activating" ( "start" )')
        assert phone.bramd.call("installFile", "s", str(apk)) is True
        phone.daemon.log.expect(f'File already exists in incoming folder: "{INCOMING}/weather.apk"',
                                "warning", DAEMON)
        self.let_it_come_up(phone)
        wait_for_entry()
        assert install_paths(phone.runtime) == [STAGED_WEATHER]
        assert phone.notifications.wait_for_notice()
        assert phone.unit.calls("StartUnit") == [("StartUnit", ["umbravm.service", "replace"])]

    def test_an_install_and_a_removal_are_both_carried_out(self, phone):
        assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
        assert phone.bramd.call("removeFile", "s", WEATHER) is True
        phone.daemon.log.expect(
            f'Umbravm not running. Will remove  PackageMod("{WEATHER}", uninstall, silent)  later',
            "debug", DAEMON)
        self.let_it_come_up(phone)
        wait_for(lambda: removals(phone.runtime), "the removal")
        assert install_paths(phone.runtime) == [STAGED_WEATHER]
        assert removed_packages(phone.runtime) == [WEATHER]
        requests = [(record["service"], record["code"])
                    for record in phone.runtime.transactions()
                    if record in installs(phone.runtime) + removals(phone.runtime)]
        assert requests == [("umbra", 2), ("package", 63)]
        wait_for(lambda: not traces(), lambda: f"the end of {traces()}")

    def test_several_files_are_installed_in_their_order(self, phone):
        names = ["papertrail", "weather", "addressbook"]
        for name in names:
            assert phone.bramd.call("installFile", "s", str(download(name))) is True
        self.let_it_come_up(phone)
        phone.notifications.wait_for_notice(len(names))
        assert install_paths(phone.runtime) == [
            f"/data/xrs-staging/app/incoming/{name}.apk" for name in names]

    def test_a_request_is_forgotten_by_a_new_daemon(self, phone):
        assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
        phone.stop_daemon()
        log = phone.start_daemon().log
        log.expect(f'Removing old incoming file: "{INCOMING}/weather.apk"')
        self.let_it_come_up(phone)
        assert not installs(phone.runtime)
        assert not entries()


def test_leftovers_in_the_staging_directory_are_replaced(phone):
    start_beside_runtime(phone)
    for name in ("weather.apk", "weather.apk.tmp"):
        (INCOMING / name).write_bytes(b"old")
    apk = download("weather")
    assert phone.bramd.call("installFile", "s", str(apk)) is True
    log = phone.daemon.log
    log.expect(f'File already exists in incoming folder: "{INCOMING}/weather.apk"', "warning",
               DAEMON)
    log.expect(f'Tmp file already exists in incoming folder: "{INCOMING}/weather.apk.tmp"',
               "warning", DAEMON)
    assert (INCOMING / "weather.apk").read_bytes() == apk.read_bytes()
    assert not (INCOMING / "weather.apk.tmp").exists()
    phone.notifications.wait_for_notice()
