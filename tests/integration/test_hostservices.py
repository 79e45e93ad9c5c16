"""Services of the host that are gone, or there and silent: what nobody waits for holds nobody up."""

import pytest

from phone.waiting import wait_for

from daemonsteps import DAEMON, start_beside_runtime
from hostfiles import PACKAGED, download, entries, home_file

# D-Bus calls without a limit of their own end with an error after 25 seconds.
SOON_MS = 15000


def answers(phone):
    return phone.bramd.call("getAndroidVersionData", timeout_ms=SOON_MS) == (28, "9", "2021-05-05")


def test_the_daemon_ends_with_the_system_bus_and_serves_on_the_next(phone):
    daemon = phone.start_daemon()
    phone.restart_system_bus()
    assert daemon.process.wait_for_end() == 1
    daemon.log.expect("The system bus is gone, ending", "critical", DAEMON)

    phone.start_daemon()
    assert answers(phone)
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
    wait_for(entries, "the desktop entry", 20)


def test_a_systemd_that_hangs_holds_nothing_up(phone):
    phone.start_daemon()
    phone.unit.process.pause()
    assert phone.bramd.call("installFile", "s", str(download("weather")), timeout_ms=SOON_MS) is True
    phone.bramd.call("controlServiceAutostart", "b", True, timeout_ms=SOON_MS)
    phone.bramd.call("launchApp", "s", "org.example.weather", timeout_ms=SOON_MS)
    assert answers(phone)

    phone.unit.process.go_on()
    phone.unit.wait_for_state("active")
    wait_for(entries, "the desktop entry", 20)
    wait_for(lambda: phone.unit.calls("EnableUnitFiles"), "the request to start at boot")


@pytest.mark.phone(services=["notifications", "packagekit"])
def test_a_package_system_that_hangs_holds_nothing_up(phone):
    start_beside_runtime(phone)
    package = "lagoon-apk-org.example.weather"
    phone.packagekit.install(package, f"{package};1.0;noarch;installed")
    (PACKAGED / "org.example.weather.apk").touch()
    phone.packagekit.process.pause()
    assert phone.bramd.call("removeFile", "s", "org.example.weather", timeout_ms=SOON_MS) is True
    assert answers(phone)

    phone.packagekit.process.go_on()
    wait_for(lambda: not phone.packagekit.installed(), "the removal of the package", 20)


@pytest.mark.phone(services=["notifications", "homescreen"])
class TestSessionBus:
    """The user's own, with the notifications and the home screen."""

    @pytest.fixture(autouse=True)
    def app(self, phone):
        start_beside_runtime(phone)
        assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
        phone.notifications.wait_for_notice()
        wait_for(entries, "the desktop entry", 20)

    @staticmethod
    def fail_to_install(phone, name="broken.apk"):
        """The user is told that this is no app, and the home screen that there is an upgrade."""
        path = home_file(name)
        assert phone.bramd.call("installFile", "s", str(path), timeout_ms=SOON_MS) is True
        phone.bramd.call("notifyRuntimeUpgrade", "b", True, timeout_ms=SOON_MS)
        assert answers(phone)

    def test_a_bus_that_hangs_holds_nothing_up(self, phone):
        phone.session_bus.process.pause()
        self.fail_to_install(phone)

        phone.session_bus.process.go_on()
        phone.notifications.wait_for_notice(2)
        wait_for(lambda: phone.homescreen.calls("updatingStarted"), "the call of the home screen")

    def test_a_home_screen_that_hangs_holds_nothing_up(self, phone):
        phone.homescreen.process.pause()
        self.fail_to_install(phone)
        phone.notifications.wait_for_notice(2)

        phone.homescreen.process.go_on()
        wait_for(lambda: phone.homescreen.calls("updatingStarted"), "the call of the home screen")

    def test_what_is_told_while_there_is_no_bus_is_lost_and_no_more(self, phone):
        phone.session_bus.process.kill()
        phone.session_bus.process.wait()
        self.fail_to_install(phone)

        phone.restart_session_bus()
        phone.start_service("notifications")
        phone.start_service("homescreen")
        self.fail_to_install(phone, "other.apk")
        phone.notifications.wait_for_notice()
        wait_for(lambda: phone.homescreen.calls("updatingStarted"), "the call of the home screen")
        assert len(phone.notifications.notices()) == 1
