"""The one phone on which all these tests run, one after the other."""

import pytest

from hostfiles import traces
from phone.waiting import wait_for

from realphone import PATIENCE_S, RealPhone


@pytest.fixture(name="machine", scope="session")
def machine_fixture():
    """The phone as the boot has left it."""
    phone = RealPhone()
    yield phone
    phone.stop()


@pytest.fixture(name="phone")
def phone_fixture(machine):
    """A phone with its user logged in and the daemon serving; its runtime is stopped and has no
    apps, unless a test left it otherwise."""
    machine.log_in()
    if not machine.session_bus:
        machine.enter_session()
    machine.start_daemon()
    machine.notifications.forget()
    yield machine
    machine.forget_apps()
    if traces():
        machine.start_runtime()
        wait_for(lambda: not traces(), lambda: f"the end of {traces()}", PATIENCE_S)
        machine.stop_runtime()
