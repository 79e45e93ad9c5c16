"""The bus of an ordinary user, with the files that let the daemon connect to it."""

import subprocess
from pathlib import Path

import pytest

from phone.process import Process
from phone.waiting import wait_for
from users import NOBODY, as_nobody

pytestmark = pytest.mark.usefixtures("needs_root")

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <include>/usr/share/dbus-1/session.conf</include>
  {ours}
</busconfig>
"""
RUNTIME_DIRECTORY = Path(f"/run/user/{NOBODY.pw_uid}")
USUAL_SOCKET = RUNTIME_DIRECTORY / "bus"


def added_sockets(installed):
    """Where the drop-in has the user's systemd listen, too."""
    drop_in = installed / "usr/lib/systemd/user/dbus.socket.d/bramd.conf"
    return [Path(line.split("=")[1].replace("%t", str(RUNTIME_DIRECTORY)))
            for line in drop_in.read_text(encoding="utf-8").splitlines()
            if line.startswith("ListenStream=")]


def start_bus(sockets, configuration):
    """A session bus of nobody, started by the first connection to one of its sockets, as the user's
    systemd does it."""
    path = Path("/run/session.conf")
    path.write_text(configuration, encoding="utf-8")
    for socket in sockets:
        socket.unlink(missing_ok=True)
        socket.parent.mkdir(parents=True, exist_ok=True)
        for directory in {socket.parent, RUNTIME_DIRECTORY}:
            subprocess.run(["chown", str(NOBODY.pw_uid), directory], check=True)
    listening = [word for socket in sockets for word in ("-l", str(socket))]
    bus = Process("users-bus", as_nobody(
        "/usr/bin/systemd-socket-activate", *listening, "/usr/bin/dbus-daemon",
        f"--config-file={path}", "--address=systemd:", "--nofork", "--nopidfile"))
    wait_for(lambda: all(socket.exists() for socket in sockets), lambda: bus)
    return bus


def list_names(socket, as_user=lambda *command: command):
    return subprocess.run(
        as_user("/usr/bin/dbus-send", f"--bus=unix:path={socket}", "--print-reply",
                "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames"),
        check=False, capture_output=True, text=True, timeout=60)


def test_root_is_admitted_at_the_address_that_the_daemon_knows(installed):
    ours = f"<includedir>{installed}/usr/share/dbus-1/session.d</includedir>"
    sockets = [USUAL_SOCKET, *added_sockets(installed)]
    assert RUNTIME_DIRECTORY / "dbus/user_bus_socket" in sockets
    bus = start_bus(sockets, CONFIGURATION.format(ours=ours))
    try:
        for socket in sockets:
            as_root, as_owner = list_names(socket), list_names(socket, as_nobody)
            assert as_root.returncode == 0, as_root.stderr
            assert as_owner.returncode == 0, as_owner.stderr
        assert bus.output.count("Execing") == 1, "both addresses are the same bus"
    finally:
        bus.stop()


def test_without_the_policy_the_bus_admits_nobody_but_its_user():
    bus = start_bus([USUAL_SOCKET], CONFIGURATION.format(ours=""))
    try:
        assert list_names(USUAL_SOCKET, as_nobody).returncode == 0
        assert list_names(USUAL_SOCKET).returncode != 0
    finally:
        bus.stop()
