"""The phone on which a test runs, and the rule that nothing unexpected may happen on it."""

import pytest

from phone.phone import Phone, clean

# The daemon ends by SIGTERM, or leaves its event loop because of it.
PEACEFUL_ENDS = (0, -15)


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "phone(**arguments): what the test's Phone is constructed with")


@pytest.fixture(name="phone")
def phone_fixture(request):
    """A phone of the test's own, without a daemon yet."""
    marker = request.node.get_closest_marker("phone")
    phone = Phone(**(marker.kwargs if marker else {}))
    try:
        yield phone
        complaints = trouble(phone)
        phone.stop()
        complaints += trouble_at_the_end(phone)
    finally:
        phone.stop()
        clean()
    assert not complaints, "\n".join(complaints)


@pytest.fixture(name="bramd")
def bramd_fixture(phone):
    """The interface of the daemon, which runs."""
    phone.start_daemon()
    return phone.bramd


def trouble(phone):
    """What nobody expected, as lines, empty if there is nothing."""
    lines = []
    for daemon in phone.daemons:
        lines += daemon.log.unclaimed_trouble()
        if not daemon.process.running and not daemon.process.end_expected:
            lines.append(f"ended with {daemon.process.exit_status}: {daemon.process}")
    if phone.router:
        lines += phone.router.misuse()
    return lines


def trouble_at_the_end(phone):
    """As trouble(), for what shows only when the phone has gone down."""
    lines = trouble(phone)
    for daemon in phone.daemons:
        if daemon.process.was_asked_to_end and daemon.process.exit_status not in PEACEFUL_ENDS:
            lines.append(f"ended with {daemon.process.exit_status}: {daemon.process}")
    return lines
