"""The machine as a phone: what sim/phone's Phone offers, on the host's real services.

Tests and the demo's story use both alike. Nothing is started here that the system does not run."""

import functools
import os
import subprocess
from pathlib import Path

from phone import waiting
from phone.buses import BusConnection
from phone.daemon import INTERFACE, OBJECT, SERVICE
from phone.daemonlog import DaemonLog
from phone.hostservices import Notifications, Unit
from phone.process import Process
from phone.runtime import Runtime
from phone.waiting import wait_for

USER, USER_ID = "phone-user", 1000
OTHER_USER = "guest-user"
SEAT = Path("/run/systemd/seats/seat0")
SYSTEM_BUS = "unix:path=/run/dbus/system_bus_socket"
SESSION_BUS = f"unix:path=/run/user/{USER_ID}/dbus/user_bus_socket"

DAEMON_UNIT = "bramd.service"
RUNTIME_UNIT = "umbravm.service"
LOGIN_UNIT = "getty@tty1.service"

# What is emulated takes its time.
waiting.slowness = 6
PATIENCE_S = 20


def run(*words, check=True, **arguments):
    """Runs a command; returns what subprocess.run() does, the output being text."""
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, check=False,
                          timeout=120, **arguments)
    assert not check or done.returncode == 0, f"{words}: {done.stdout}{done.stderr}"
    return done


def systemctl(*words):
    return run("systemctl", *words).stdout.strip()


def show(unit, name):
    """One property of a unit, as text. Asked for so often that a process for each would take most of
    an emulated processor."""
    manager = _systemd("/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager")
    properties = _systemd(manager.call("LoadUnit", "s", unit), "org.freedesktop.DBus.Properties")
    return str(properties.call("GetAll", "s", "")[name])


@functools.lru_cache(maxsize=None)
def _systemd(path, interface):
    return _system_bus().object("org.freedesktop.systemd1", path, interface)


@functools.lru_cache(maxsize=None)
def _system_bus():
    return BusConnection("system", SYSTEM_BUS)


def as_user(user, *words, group=None, **arguments):
    """Runs a command as that user, in groups and environment of a fresh login, or with another primary
    group."""
    return run("setpriv", f"--reuid={user}", f"--regid={group or user}", "--init-groups", "--reset-env",
               "--", *words, **arguments)


def _end_of_journal():
    shown = run("journalctl", "--lines=1", "--show-cursor", "--quiet").stdout
    return shown.rpartition("-- cursor: ")[2].strip()


class DaemonUnit:
    """The daemon as systemd runs it, and its log. Its process is here the one that prints the
    log."""

    def __init__(self, process):
        self.process = process
        self.log = DaemonLog(process.output_path)

    @property
    def pid(self):
        return int(show(DAEMON_UNIT, "MainPID"))


class TimeDate:
    """The host's time zone."""

    def set_zone(self, zone):
        run("timedatectl", "set-timezone", zone)


class RealPhone:
    """The attributes are those of sim/phone's Phone."""

    def __init__(self, sdk=28, whole_log=True):
        """The daemon's log is that of the whole boot, or begins here."""
        self.system_bus = BusConnection("system", SYSTEM_BUS)
        self.bramd = self.system_bus.object(SERVICE, OBJECT, INTERFACE)
        self.session_bus = self.notifications = None
        self.timedate = TimeDate()
        self.unit = Unit(self.system_bus, start=False)
        self.runtime = Runtime(os.environ["BRAMD_BUILD_DIR"], sdk)
        self._log_reader = Process("bramd-log", [
            "/bin/journalctl", "--follow", "--lines=all", "--output=cat", "--boot", "--unit",
            DAEMON_UNIT, *([] if whole_log else [f"--after-cursor={_end_of_journal()}"])])
        self.daemon = DaemonUnit(self._log_reader)

    def log_in(self):
        """The user is logged in on seat0, as at the end of every boot."""
        systemctl("start", LOGIN_UNIT)
        wait_for(lambda: f"ACTIVE_UID={USER_ID}" in SEAT.read_text("ascii"), "the login",
                 PATIENCE_S)

    def log_out(self):
        self._leave_session()
        systemctl("stop", LOGIN_UNIT)
        run("loginctl", "terminate-user", USER, check=False)
        wait_for(lambda: "ACTIVE_UID" not in SEAT.read_text("ascii"), "the logout", PATIENCE_S)
        wait_for(lambda: not Path(f"/run/user/{USER_ID}").exists(), "the user's end", PATIENCE_S)

    def enter_session(self):
        """Looks at the user's own session bus, through the address that the daemon uses."""
        wait_for(Path(SESSION_BUS.partition("=")[2]).exists, "the session bus", PATIENCE_S)
        self.session_bus = BusConnection("session", SESSION_BUS)
        self.notifications = Notifications(self.session_bus, start=False)
        self.notifications.wait_until_ready()

    def start_daemon(self):
        systemctl("start", "--no-block", DAEMON_UNIT)
        self.wait_until_served()

    def wait_until_served(self):
        self.system_bus.wait_for_owner(SERVICE, PATIENCE_S)

    def stop_daemon(self):
        """Returns its exit status."""
        systemctl("stop", DAEMON_UNIT)
        assert not self.system_bus.has_owner(SERVICE)
        return int(show(DAEMON_UNIT, "ExecMainStatus"))

    def start_runtime(self):
        systemctl("start", RUNTIME_UNIT)

    def stop_runtime(self):
        systemctl("stop", RUNTIME_UNIT)

    def stop(self):
        self._leave_session()
        self.system_bus.stop()
        self._log_reader.stop()

    def _leave_session(self):
        if self.session_bus:
            self.session_bus.stop()
            self.session_bus = self.notifications = None
