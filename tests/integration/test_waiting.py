"""Requests that wait for a runtime that does not come, and callers who do not stop."""

import re

import pytest

from phone.waiting import wait_for

from daemonsteps import DAEMON
from hostfiles import INCOMING, download
from launches import WEATHER, launched_packages
from packagerequests import DELETE_CODES

# Half a mebibyte in the daemon's memory, and a little more, of which thirty-one may wait in each
# list. The runtime takes no request of more than a mebibyte.
LETTERS = 256 * 1024
ROOM = 31

FULL = "Too many requests wait for the runtime, dropping new ones"


@pytest.fixture(name="starting", autouse=True)
def starting_fixture(phone):
    """The unit starts for as long as it is held; what is asked for meanwhile waits."""
    phone.start_daemon()
    phone.unit.hold_activation(True)


def long_name(number, letters=LETTERS):
    return f"app{number:02}." + "x" * letters


def check_refusal(phone, text):
    """One line, and not the whole name in it."""
    line = phone.daemon.log.expect(re.compile(text + ".*"), "critical", DAEMON)
    assert len(line.text) < 400


def test_launches_wait_in_a_limited_number(phone):
    for number in range(ROOM + 2):
        phone.bramd.call("launchApp", "s", long_name(number))
    phone.daemon.log.expect(FULL, "warning", DAEMON)
    phone.notifications.wait_for_notice(ROOM)
    phone.unit.hold_activation(False)
    wait_for(lambda: len(launched_packages(phone)) == ROOM, "the launches", 30)
    assert launched_packages(phone) == [long_name(number) for number in range(ROOM)]
    assert len(phone.notifications.notices()) == ROOM


def test_intents_wait_in_a_limited_number(phone):
    for number in range(ROOM + 2):
        phone.bramd.call("launchIntent", "ssssssa{sv}", f"action{number}", "", "", "", "",
                         long_name(number), {})
    phone.daemon.log.expect(FULL, "warning", DAEMON)


def test_a_request_that_is_larger_than_all_that_may_wait_is_dropped(phone):
    phone.bramd.call("launchApp", "s", "x" * 9 * 1024 * 1024)
    phone.daemon.log.expect(FULL, "warning", DAEMON)
    phone.bramd.call("launchApp", "s", WEATHER)
    phone.unit.hold_activation(False)
    wait_for(lambda: launched_packages(phone), "the launch", 30)
    assert launched_packages(phone) == [WEATHER]


def test_package_requests_wait_in_a_limited_number(phone):
    refused = "Too many requests wait for the runtime, refusing:"
    accepted = 0
    for letters in (LETTERS, 32 * 1024, 4 * 1024, 512, 64, 1):  # until there is no room at all
        while phone.bramd.call("removeFile", "s", long_name(accepted, letters)):
            accepted += 1
        check_refusal(phone, f'{refused} "app{accepted:02}')
    assert accepted > ROOM
    apk = download("weather")
    assert phone.bramd.call("installFile", "s", str(apk)) is False
    check_refusal(phone, f'{refused} "{apk}"')
    assert not list(INCOMING.iterdir())

    phone.unit.hold_activation(False)
    delete = DELETE_CODES[phone.runtime.sdk]
    phone.runtime.wait_for_transaction("package", delete, accepted, 30)
    assert phone.bramd.call("installFile", "s", str(apk)) is True
    assert phone.notifications.wait_for_notice()
    assert len(phone.runtime.transactions("package", delete)) == accepted
