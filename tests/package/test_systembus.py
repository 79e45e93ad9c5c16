"""The policy of the system bus: who may own, call and hear com.corvo.bramd."""

import subprocess
import sys
from pathlib import Path

import pytest

from phone.process import Process
from phone.waiting import wait_for
from users import as_nobody

pytestmark = pytest.mark.usefixtures("needs_root")

HERE = Path(__file__).parent
ADDRESS = "unix:path=/run/dbus/system_bus_socket"
POLICY = "usr/share/dbus-1/system.d/com.corvo.bramd.conf"
USERS_POLICY = "etc/dbus-1/system.d/com.corvo.bramd-users.conf"

# Debian's own configuration, on a host that lets everybody do everything but what ours is about.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <include>/usr/share/dbus-1/system.conf</include>
  <policy context="default">
    <allow own="*"/>
    <allow send_type="method_call"/>
  </policy>
  {ours}
</busconfig>
"""


def run_bus(installed, policies):
    """The system bus with some of our policies, and a stand-in for the daemon."""
    configuration = Path("/run/system.conf")
    ours = "".join(f"<include>{installed}/{policy}</include>" for policy in policies)
    configuration.write_text(CONFIGURATION.format(ours=ours), encoding="utf-8")
    Path("/run/dbus").mkdir(exist_ok=True)
    Path("/run/dbus").chmod(0o777)  # the bus has become its own user when it opens its socket
    bus = Process("bus", ["/usr/bin/dbus-daemon", f"--config-file={configuration}", "--nofork",
                          "--nopidfile", "--nosyslog"])
    wait_for(lambda: Path("/run/dbus/system_bus_socket").exists() or not bus.running, lambda: bus)
    service = Process("service", [sys.executable, HERE / "busservice.py", ADDRESS])
    wait_for(lambda: "serving" in service.output or not service.running, lambda: service)
    assert service.running, service
    yield bus
    service.stop()
    bus.stop()
    Path("/run/dbus/system_bus_socket").unlink(missing_ok=True)
    assert "Unknown" not in bus.output, bus


@pytest.fixture(name="bus")
def bus_fixture(installed):
    yield from run_bus(installed, [POLICY, USERS_POLICY])


@pytest.fixture(name="bus_without_users")
def bus_without_users_fixture(installed):
    yield from run_bus(installed, [POLICY])


def send(as_user, destination, path, method, *arguments):
    return subprocess.run(
        as_user("/usr/bin/dbus-send", f"--bus={ADDRESS}", "--print-reply", f"--dest={destination}",
                path, method, *arguments),
        check=False, capture_output=True, text=True, timeout=60)


def as_root(*command):
    return list(command)


def member_of(group):
    return lambda *command: as_nobody(*command, group=group)


def call(as_user, method="com.corvo.bramd.getAndroidAppDataUsage", *arguments):
    return send(as_user, "com.corvo.bramd", "/com/corvo/bramd", method, *arguments)


def was_refused(result):
    return result.returncode != 0 and "org.freedesktop.DBus.Error.AccessDenied" in result.stderr


ADMITTED = [pytest.param(as_root, id="root"),
            *(pytest.param(member_of(group), id=group)
              for group in ("privileged", "disk", "users"))]


@pytest.mark.usefixtures("bus")
@pytest.mark.parametrize("caller", ADMITTED)
def test_who_is_admitted_gets_answers(caller):
    answer = call(caller)
    assert "uint64 42" in answer.stdout, answer.stderr
    description = call(caller, "org.freedesktop.DBus.Introspectable.Introspect")
    assert "getAndroidAppDataUsage" in description.stdout, description.stderr


@pytest.mark.usefixtures("bus")
@pytest.mark.parametrize("caller", [pytest.param(as_nobody, id="no group"),
                                    pytest.param(member_of("mail"), id="another group")])
def test_everybody_else_is_refused(caller):
    assert was_refused(call(caller))
    assert was_refused(call(caller, "org.freedesktop.DBus.Introspectable.Introspect"))


@pytest.mark.usefixtures("bus_without_users")
def test_ordinary_users_are_refused_once_their_policy_is_removed():
    assert was_refused(call(member_of("users")))
    assert call(member_of("disk")).returncode == 0


@pytest.mark.usefixtures("bus")
@pytest.mark.parametrize("group", ["privileged", "disk", "users"])
def test_only_root_owns_the_name(group):
    refused = send(member_of(group), "org.freedesktop.DBus", "/", "org.freedesktop.DBus.RequestName",
                   "string:com.corvo.bramd", "uint32:0")
    assert was_refused(refused)


@pytest.mark.usefixtures("bus")
@pytest.mark.parametrize(("listener", "expected"), [
    pytest.param(as_root, 1, id="root"),
    pytest.param(member_of("users"), 1, id="users"),
    pytest.param(member_of("disk"), 1, id="disk"),
    pytest.param(member_of("privileged"), 1, id="privileged"),
    pytest.param(as_nobody, 0, id="no group")])
def test_signals_are_for_those_who_may_call(listener, expected):
    with subprocess.Popen(listener(sys.executable, HERE / "buslistener.py", ADDRESS), text=True,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
        assert process.stdout.readline() == "listening\n"
        assert call(as_root).returncode == 0  # which emits one, before its answer
        received, _ = process.communicate("\n", timeout=60)
    assert int(received) == expected
