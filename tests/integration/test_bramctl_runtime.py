"""bramctl and the runtime as a whole: its state, start and stop, version and disk use."""

from phone.runtime import CONTROL, DATA_ROOT

from bramctl import NO_RUNTIME, NOT_CONFIRMED, REFUSED, bramctl
from daemonsteps import BINDER, DIED, forgive_deaths, start_beside_runtime
from launches import WEATHER


def test_it_is_started_and_stopped(phone):
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

    since = phone.daemon.log.mark()
    bramctl("stop").done("has stopped")
    assert phone.unit.state() == "inactive"
    bramctl("stop").done("does not run (inactive)")
    forgive_deaths(phone, since)


def test_it_is_restarted(phone):
    start_beside_runtime(phone)
    bramctl("restart").done("has stopped", "runs.")
    assert [name for name, _ in phone.unit.calls("StopUnit")] == ["StopUnit"]
    forgive_deaths(phone)
    assert phone.unit.state() == "active"


def test_one_that_does_not_stop_in_order_is_restarted_all_the_same(phone):
    unruly = ["/bin/sh", "-c", "trap 'kill $!; wait; exit 1' TERM; \"$@\" & wait", "sh",
              *phone.runtime.command()]
    phone.start_daemon()
    phone.unit.set_command(unruly, CONTROL)
    bramctl("start").done()
    bramctl("stop").failed(REFUSED, "not in order", "journalctl -u umbravm")
    assert phone.unit.state() == "failed"
    bramctl("start").done()
    phone.unit.set_command(phone.runtime.command(), CONTROL)
    bramctl("restart").done("has stopped, but not in order", "runs.")
    assert phone.unit.state() == "active"
    for _ in range(2):
        phone.daemon.log.expect('Umbra VM is "failed" ( "failed" )')
    phone.daemon.log.claim_all(DIED, "warning", BINDER)


def test_one_that_fails_again_at_once_is_reported(phone):
    phone.start_daemon()
    phone.unit.show("failed", "failed")
    phone.unit.set_command(["/bin/false"], "/run/phone/nobody")
    bramctl("start").failed(NO_RUNTIME, "has failed to start")


def test_one_that_systemd_does_not_begin_to_start_is_reported(phone):
    start_beside_runtime(phone)
    phone.unit.show("failed", "failed")  # while its process lives, this systemd begins nothing
    bramctl("start").failed(NO_RUNTIME, "has failed to start")
    phone.unit.show("active", "running")


def test_one_that_has_failed_is_started_anew(phone):
    phone.start_daemon()
    phone.unit.show("failed", "failed")
    bramctl("start").done("The Android runtime runs.")


def test_a_start_that_takes_too_long_is_not_confirmed(phone):
    phone.start_daemon()
    phone.unit.hold_activation(True)
    bramctl("start", "--timeout", "1").failed(NOT_CONFIRMED, "activating", "bramctl status")
    phone.unit.hold_activation(False)
    phone.unit.wait_for_state("active")


def test_a_runtime_that_cannot_start_is_reported(phone):
    phone.start_daemon()
    phone.unit.set_command(["/bin/false"], "/run/phone/nobody")
    bramctl("start").failed(NO_RUNTIME, "has failed", "journalctl -u umbravm")


def test_its_start_at_boot_is_switched(phone):
    phone.start_daemon()
    bramctl("autostart", "on").done("starts at boot")
    assert bramctl("status", "--json").json()["runtime"]["atBoot"] is True
    bramctl("autostart", "off").done("only when it is needed")
    assert bramctl("status", "--json").json()["runtime"]["atBoot"] is False


def test_its_version_is_told(phone):
    phone.start_daemon()
    bramctl("version").done("bramctl  0.1.0\n", "Android  9 (SDK 28)")
    assert bramctl("version", "--json").json()["android"]["sdk"] == 28


def test_the_disk_use_is_measured(phone):
    phone.start_daemon()
    app_data = DATA_ROOT / "data/data" / WEATHER
    app_data.mkdir(parents=True)
    (app_data / "map").write_bytes(b"x" * 5_000_000)
    bramctl("usage").done("5.0 MB")
    assert bramctl("usage", "--json").json()["bytes"] > 5_000_000
