"""The one phone on which all these tests run, one after the other."""

import re

import pytest

from hostfiles import traces
from phone.waiting import wait_for

from realphone import PATIENCE_S, RealPhone
from steps import start_runtime


# Warnings that belong to what the tests do, whichever of them does it.
EXPECTED = [re.compile(text) for text in (
    # A handler's entry never had a settings page, and a deletion that finds no file is logged.
    'Could not remove: "/usr/share/corvo-settings/entries/bramd_handler_.*',
    # The staging directory keeps what was installed until the daemon starts anew.
    'File already exists in incoming folder: .*',
    # The runtime's end may be heard of before systemd tells that it stops.
    r'(activity|alarm|package|umbra) died! Trying to reconnect\.',
)]
ANYTHING = re.compile("(?s).*")


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "phone(**arguments): known to steps that the simulated phone's tests share")


@pytest.fixture(name="machine", scope="session")
def machine_fixture():
    """The phone as the boot has left it."""
    phone = RealPhone()
    yield phone
    check_log(phone)
    phone.stop()


@pytest.fixture(name="phone")
def phone_fixture(machine):
    """A phone with its user logged in and the daemon serving; its runtime is stopped and has no
    apps."""
    machine.log_in()
    if not machine.session_bus:
        machine.enter_session()
    machine.start_daemon()
    machine.notifications.forget()
    yield machine
    if traces() or installed_apps(machine):
        remove_apps(machine)
    machine.stop_runtime()
    check_log(machine)


def check_log(phone):
    """Each warning was expected; what the sandbox denies shows here first. None is told of twice."""
    for text in EXPECTED:
        phone.daemon.log.claim_all(text)
    trouble = phone.daemon.log.unclaimed_trouble()
    phone.daemon.log.claim_all(ANYTHING)
    assert not trouble


def installed_apps(phone):
    """The apps of the runtime, if it runs; one that a test had started may still be on its way."""
    if phone.unit.state() != "active":
        return []

    def told():
        try:
            return [phone.runtime.apps()]
        except (FileNotFoundError, ConnectionRefusedError):
            return []
    return wait_for(told, "the runtime's control socket", PATIENCE_S)[0]


def remove_apps(phone):
    """As their user would. The runtime cannot just lose them: what the daemon was once told of is no
    orphan to it until it hears of the removal."""
    if phone.unit.state() != "active":
        start_runtime(phone)
    since = phone.daemon.log.mark()
    for app in phone.runtime.apps():
        phone.bramd.call("removeFile", "s", app["package"])
        # What is announced of the app, even now, was announced before this.
        wait_for(lambda text=f'onRemovePackage: "{app["package"]}"':
                 phone.daemon.log.count(text, since), app["package"], PATIENCE_S)
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)
