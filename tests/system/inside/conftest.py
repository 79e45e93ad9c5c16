"""The one phone on which all these tests run, one after the other."""

import pytest

from hostfiles import traces
from phone.waiting import wait_for

from realphone import PATIENCE_S, RealPhone
from steps import start_runtime


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "phone(**arguments): known to steps that the simulated phone's tests share")


@pytest.fixture(name="machine", scope="session")
def machine_fixture():
    """The phone as the boot has left it."""
    phone = RealPhone()
    yield phone
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
    if traces():
        remove_apps(machine)
    machine.stop_runtime()


def remove_apps(phone):
    """As their user would. The runtime cannot just lose them: what the daemon was once told of is no
    orphan to it until it hears of the removal."""
    if phone.unit.state() != "active":
        start_runtime(phone)
    for app in phone.runtime.apps():
        phone.bramd.call("removeFile", "s", app["package"])
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)
