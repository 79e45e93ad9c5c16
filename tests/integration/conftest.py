"""The phone on which a test runs, and the rule that nothing unexpected may happen on it."""

from pathlib import Path

import pytest

from phone.phone import Phone, clean

from daemonsteps import start_beside_runtime, wait_until_announced
from faultscenarios import Announcement, Installation, Removal
from faulttrial import ALL, FaultTrial
from hostfiles import download

INVOKER = Path("/usr/bin/invoker")


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "phone(**arguments): what the test's Phone is constructed with")


@pytest.fixture(name="phone")
def phone_fixture(request):
    """A phone of the test's own, without a daemon yet."""
    marker = request.node.get_closest_marker("phone")
    try:
        with Phone(**(marker.kwargs if marker else {})) as phone:
            yield phone
        complaints = trouble(phone)
    finally:
        clean()
    assert not complaints, "\n".join(complaints)


@pytest.fixture(name="bramd")
def bramd_fixture(phone):
    """The interface of the daemon, which runs."""
    phone.start_daemon()
    return phone.bramd


@pytest.fixture(name="papertrail")
def papertrail_fixture(phone):
    """A phone on which the app Paper Trail, which takes what is shared, is announced."""
    start_beside_runtime(phone)
    since = phone.daemon.log.mark()
    assert phone.bramd.call("installFile", "s", str(download("papertrail"))) is True
    wait_until_announced(phone, since)
    phone.runtime.forget()
    return phone


@pytest.fixture(name="trial", params=[Announcement, Installation, Removal],
                ids=lambda scenario: scenario.__name__)
def trial_fixture(request, capsys, phone, file_system):
    """One of the daemon's tasks, to be disturbed. What is found fails the test at its end."""
    # An image that cannot be looked for is taken for none, and the runtime is offered.
    INVOKER.symlink_to("/bin/true")
    try:
        trial = FaultTrial(phone, request.param, file_system)
        yield trial
    finally:
        INVOKER.unlink()
    trial.close()
    assert trial.points, "nothing was tried"
    with capsys.disabled():
        if ALL:
            print(f"\n{request.node.name}: {trial.points} faults at {len(trial.calls)} calls, "
                  f"{len(trial.findings)} findings")
    assert not trial.findings, "\n".join(trial.findings)


def trouble(phone):
    """What nobody expected on a phone that has gone down, as lines, empty if there is nothing."""
    lines = []
    for daemon in phone.daemons:
        lines += daemon.log.unclaimed_trouble()
        process = daemon.process
        if not process.end_expected:
            lines.append(f"ended by itself with {process.exit_status}: {process}")
        elif process.was_asked_to_end and process.exit_status != 0:
            lines.append(f"ended with {process.exit_status}: {process}")
    if phone.router and phone.router.failed:
        lines += phone.router.misuse()
        lines.append(f"ended with {phone.router.process.exit_status}: {phone.router.process}")
    return lines
