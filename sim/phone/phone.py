"""The simulated phone: what the daemon finds around it, started and stopped as a whole."""

import os
import shutil
import subprocess
from pathlib import Path

from .buses import SESSION_SOCKET, SYSTEM_SOCKET, Bus
from .daemon import INTERFACE, OBJECT, SERVICE, Daemon
from .hostservices import Accounts, HomeScreen, Notifications, PackageKit, TimeDate, Unit
from .login import LoginState
from .namespace import USER_ID
from .router import Router
from .runtime import CONTROL, Runtime

HOST_SERVICES = {"notifications": Notifications, "accounts": Accounts, "packagekit": PackageKit,
                 "homescreen": HomeScreen, "timedate": TimeDate}


class Phone:
    """A phone whose user is logged in and whose runtime is installed, but stopped.

    Only one can exist at a time, and only inside the private namespace of `enter`. Use it as a
    context manager; start_daemon() starts bramd.

    Attributes: system_bus, session_bus; login (LoginState); unit (Unit: systemd's
    "umbravm.service"); runtime (Runtime: image, control socket and record); router; daemon (the
    newest Daemon); bramd (BusObject on com.corvo.bramd); notifications and whatever else of
    HOST_SERVICES was asked for by name, else None.
    """

    def __init__(self, sdk=28, services=("notifications",), device=True, logged_in=True,
                 router_options=()):
        if Path("/proc/1/cmdline").read_bytes().find(b"--inside") < 0:
            raise RuntimeError("a phone needs sim/phone/enter around it")
        self.build_directory = Path(os.environ["BRAMD_BUILD_DIR"])
        self._daemons = []
        self._services = []
        self.unit = self.router = self.system_bus = self.session_bus = None
        self.notifications = self.accounts = self.packagekit = self.homescreen = None
        self.timedate = None
        self.login = LoginState()
        if logged_in:
            self.login.login()
        self.runtime = Runtime(self.build_directory, sdk)
        try:
            if device:
                self.add_device(router_options)
            self.session_bus = Bus("session", SESSION_SOCKET)
            self._start_system_bus()
            self._start(services)
        except BaseException:
            self.stop()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.stop()

    @property
    def daemon(self):
        return self._daemons[-1] if self._daemons else None

    @property
    def daemons(self):
        """Every daemon that was started on this phone, oldest first."""
        return list(self._daemons)

    def start_daemon(self, environment=None, wait=True, prefix=()):
        """Starts bramd, through the command words of prefix if there are any, and, unless told
        otherwise, waits until it serves com.corvo.bramd."""
        daemon = Daemon(self.build_directory, environment, prefix)
        self._daemons.append(daemon)
        if wait:
            daemon.wait_until_served(self.system_bus)
        return daemon

    def stop_daemon(self):
        status = self.daemon.stop()
        self.system_bus.wait_until_ownerless(SERVICE)
        return status

    def start_service(self, name):
        """Starts one of HOST_SERVICES later than the rest."""
        service = self._start_service(name)
        service.wait_until_ready()
        return service

    def restart_system_bus(self):
        """The bus crashes and is started again, with systemd. Not while the runtime runs, of which
        that systemd knows nothing."""
        self.system_bus.process.kill()
        self.system_bus.stop()
        for service in [service for service in self._services if service.bus is self.system_bus]:
            service.process.wait()
            self._services.remove(service)
        self._start_system_bus()
        self._start([])

    def restart_session_bus(self):
        """The same for the session bus, without services at first."""
        self.session_bus.process.kill()
        self.session_bus.stop()
        self._services = [service for service in self._services
                          if service.bus is not self.session_bus]
        self.session_bus = Bus("session", SESSION_SOCKET)

    def add_device(self, router_options=()):
        """The binder device appears."""
        self.router = Router(self.build_directory, router_options)

    def start_runtime(self, hold=()):
        """Starts the unit as an administrator would, and waits until it is active."""
        self.unit.set_command(self.runtime.command(hold), CONTROL)
        self.unit.start()
        self.unit.wait_for_state("active")

    def stop_runtime(self):
        self.unit.stop_unit()
        self.unit.wait_for_state("inactive")

    def call_as(self, method, argument, uid=USER_ID, gid=USER_ID, groups=()):
        """Calls a method of com.corvo.bramd with one string from a process of another user (needs
        root outside, too); returns the boolean of the reply."""
        identity = ["--groups", ",".join(map(str, groups))] if groups else ["--clear-groups"]
        result = subprocess.run(
            ["/usr/bin/setpriv", "--reuid", str(uid), "--regid", str(gid), *identity,
             "/usr/bin/dbus-send", f"--bus={self.system_bus.address}", "--print-reply=literal",
             "--reply-timeout=30000", f"--dest={SERVICE}", OBJECT, f"{INTERFACE}.{method}",
             f"string:{argument}"], capture_output=True, text=True, timeout=40, check=False)
        words = result.stdout.split()
        if result.returncode != 0 or words[:1] != ["boolean"]:
            raise AssertionError(f"{method}: {result.stdout}{result.stderr}")
        return words[1] == "true"

    def stop(self):
        """Ends everything, in the order in which a phone goes down. May be called again."""
        try:
            for daemon in self._daemons:
                daemon.stop()
            if self.unit and self.unit.state() not in ("inactive", "failed"):
                self.stop_runtime()
        finally:
            self.unit = None
            while self._services:
                self._services.pop().stop()
            for part in (self.session_bus, self.system_bus, self.router):
                if part:
                    part.stop()

    def _start_system_bus(self):
        self.system_bus = Bus("system", SYSTEM_SOCKET)
        self.bramd = self.system_bus.object(SERVICE, OBJECT, INTERFACE)

    def _start(self, services):
        """Starts systemd and other services."""
        unit = Unit(self.system_bus)
        self._services.append(unit)
        for name in services:
            self._start_service(name)
        for service in self._services:
            service.wait_until_ready()
        unit.set_command(self.runtime.command(), CONTROL)
        self.unit = unit

    def _start_service(self, name):
        kind = HOST_SERVICES[name]
        on_session_bus = name in ("notifications", "homescreen")
        service = kind(self.session_bus if on_session_bus else self.system_bus)
        setattr(self, name, service)
        self._services.append(service)
        return service


def clean():
    """Forgets all that a phone has written, for the next one in the same namespace."""
    for directory in ("/usr/share/applications", "/usr/share/bramd", "/etc/bramd",
                      "/usr/share/corvo-settings/entries"):
        for path in Path(directory).iterdir():
            shutil.rmtree(path) if path.is_dir() else path.unlink()
    for directory in ("/home/.android", "/var/lib/bramd", "/opt/umbra", "/run/phone",
                      "/run/dbus", "/run/systemd", "/run/user"):
        shutil.rmtree(directory, ignore_errors=True)
