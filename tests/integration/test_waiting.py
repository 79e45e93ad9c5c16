"""Requests that wait for a runtime that does not come, and callers who do not stop."""

import re

import pytest

from phone.waiting import wait_for

from daemonsteps import DAEMON
from hostfiles import INCOMING, download
from launches import launched_packages
from packagerequests import DELETE_CODES

# Half a mebibyte in the daemon's memory, of which thirty-two may wait in each list. The
# runtime takes no request of more than a mebibyte.
LETTERS = 256 * 1024
ROOM = 32

FULL = "Too many requests wait for the runtime, dropping new ones"


@pytest.fixture(name="starting", autouse=True)
def starting_fixture(phone):
    """The unit starts for as long as it is held; what is asked for meanwhile waits."""
    phone.start_daemon()
    phone.unit.hold_activation(True)


def long_name(number):
    return f"app{number:02}." + "x" * LETTERS


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


def test_package_requests_wait_in_a_limited_number(phone):
    for number in range(ROOM):
        assert phone.bramd.call("removeFile", "s", long_name(number)) is True
    refused = "Too many requests wait for the runtime, refusing:"
    assert phone.bramd.call("removeFile", "s", long_name(ROOM)) is False
    check_refusal(phone, f'{refused} "app{ROOM}')
    apk = download("weather")
    assert phone.bramd.call("installFile", "s", str(apk)) is False
    check_refusal(phone, f'{refused} "{apk}"')
    assert not list(INCOMING.iterdir())

    phone.unit.hold_activation(False)
    delete = DELETE_CODES[phone.runtime.sdk]
    phone.runtime.wait_for_transaction("package", delete, ROOM, 30)
    assert phone.bramd.call("installFile", "s", str(apk)) is True
    assert phone.notifications.wait_for_notice()
    assert len(phone.runtime.transactions("package", delete)) == ROOM
