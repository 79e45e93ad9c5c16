"""The runtime's clock follows the host's time zone."""

import pytest

from phone.waiting import wait_for

from daemonsteps import BINDER, forgive_deaths, start_beside_runtime, start_runtime

SET_TIME_ZONE = 3
HOME = "Europe/Helsinki"

with_time_daemon = pytest.mark.phone(services=("notifications", "timedate"))


def zones(phone):
    """Every zone that the runtime was told, in order."""
    return [record["decoded"]["zone"]
            for record in phone.runtime.transactions("alarm", SET_TIME_ZONE)]


def wait_for_zones(phone, *expected):
    wait_for(lambda: len(zones(phone)) >= len(expected), lambda: f"{expected} in {zones(phone)}")
    assert zones(phone) == list(expected)


@pytest.mark.parametrize("sdk", [
    pytest.param(sdk, marks=pytest.mark.phone(sdk=sdk, services=("notifications", "timedate")))
    for sdk in (27, 28, 29, 30)])
def test_a_runtime_that_comes_up_is_told_the_hosts_zone(phone, sdk):
    del sdk
    phone.start_daemon()
    start_runtime(phone)
    wait_for_zones(phone, HOME)
    assert phone.runtime.control("state")["timezone"] == HOME


@with_time_daemon
def test_a_new_zone_is_told_once(phone):
    start_beside_runtime(phone)
    phone.timedate.set_zone(HOME)
    for zone in ("America/Argentina/Buenos_Aires", "UTC"):
        phone.timedate.set_zone(zone)
        phone.timedate.set_zone(zone)
        phone.timedate.use_network_time(False)
    wait_for_zones(phone, "America/Argentina/Buenos_Aires", "UTC")


@with_time_daemon
def test_a_runtime_that_comes_back_is_told_again(phone):
    start_beside_runtime(phone)
    phone.stop_runtime()
    forgive_deaths(phone)
    phone.runtime.forget()
    start_runtime(phone)
    wait_for_zones(phone, HOME)


@with_time_daemon
def test_a_change_while_the_runtime_is_away_is_told_later(phone):
    phone.start_daemon()
    phone.timedate.set_zone("Asia/Kathmandu")
    start_runtime(phone)
    wait_for_zones(phone, "Asia/Kathmandu")


@with_time_daemon
def test_a_failed_call_is_reported_and_not_repeated(phone):
    start_beside_runtime(phone)
    phone.runtime.forget()
    phone.runtime.fault("alarm", "status", value=-22, count=1)
    phone.timedate.set_zone("Asia/Kathmandu")
    phone.daemon.log.expect("Failed to set umbra timezone: -22", "warning", BINDER)
    phone.timedate.set_zone("Asia/Kathmandu")
    phone.timedate.set_zone("UTC")
    wait_for_zones(phone, "Asia/Kathmandu", "UTC")


def test_a_missing_time_daemon_is_no_trouble_and_heard_when_it_comes(phone):
    phone.start_daemon()
    start_runtime(phone)
    assert zones(phone) == [""]
    phone.runtime.forget()
    phone.start_service("timedate")
    phone.timedate.set_zone("UTC")
    wait_for_zones(phone, "UTC")
