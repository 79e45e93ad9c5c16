"""The host services around the daemon, each a python3-dbusmock process on one of the buses."""

import signal
from pathlib import Path

from .buses import BusObject
from .mockprocess import MockProcess
from .waiting import wait_for

MOCKS = Path(__file__).resolve().parent / "mocks"
MOCK_IFACE = "org.freedesktop.DBus.Mock"


class HostService:
    """One mocked service. Its template says what it can do, and offers the interface `control`."""

    template = ""
    service = ""
    path = ""
    control_interface = ""

    def __init__(self, bus, start=True):
        """Starts it, unless it is run by somebody else; use wait_until_ready() before anything
        else."""
        self.bus = bus
        self.process = MockProcess(self.template, [
            f"--{bus.kind}", "--template", MOCKS / f"{self.template}.py"],
            {f"DBUS_{bus.kind.upper()}_BUS_ADDRESS": bus.address}) if start else None
        self._mock = BusObject(bus, self.service, self.path, MOCK_IFACE)
        self.control = BusObject(bus, self.service, self.path, self.control_interface)

    def wait_until_ready(self):
        # The name is taken before the template is loaded; calls are answered only afterwards.
        wait_for(lambda: self.bus.has_owner(self.service)
                 or (self.process and not self.process.running),
                 lambda: self.process or self.service, 60)
        self._mock.call("GetCalls")

    def calls(self, method=None):
        """(method, [arguments]) of every call since forget(), oldest first."""
        return [(name, arguments) for _time, name, arguments in self._mock.call("GetCalls")
                if name == method or (method is None and name[0].isupper())]

    def forget(self):
        self._mock.call("ClearCalls")

    def stop(self):
        self.process.stop()


class Notifications(HostService):
    """What the user was shown."""

    template = "notifications"
    service = "org.freedesktop.Notifications"
    path = "/org/freedesktop/Notifications"

    def notices(self):
        """Every notice since forget(), as dicts named like the arguments of Notify."""
        names = ("application", "replaces", "icon", "summary", "body", "actions", "hints",
                 "timeout")
        return [dict(zip(names, arguments)) for _name, arguments in self.calls("Notify")]

    def wait_for_notice(self, count=1, timeout=20):
        """Waits until there are that many, and returns the last."""
        wait_for(lambda: len(self.notices()) >= count, f"notice {count}", timeout)
        return self.notices()[count - 1]


class Accounts(HostService):
    """The user's account and parental controls."""

    template = "accounts"
    service = "org.freedesktop.Accounts"
    path = "/org/freedesktop/Accounts"
    control_interface = "phone.Accounts"

    def allow_installation(self, allowed):
        self.control.call("Allow", "b", allowed)

    def remove_filter(self):
        self.control.call("RemoveFilter")

    def set_mode(self, mode):
        """"answer", "fail" or "hang"."""
        self.control.call("SetMode", "s", mode)


class PackageKit(HostService):
    """The host's own packages."""

    template = "packagekit"
    service = "org.freedesktop.PackageKit"
    path = "/org/freedesktop/PackageKit"
    control_interface = "phone.PackageKit"

    def install(self, name, package_id):
        self.control.call("Install", "ss", name, package_id)

    def fail(self, role, code, details):
        self.control.call("Fail", "sus", role, code, details)

    def installed(self):
        return self.control.call("InstalledPackages")

    def transaction_calls(self):
        return self.control.call("TransactionCalls")


class TimeDate(HostService):
    """The host's clock and time zone."""

    template = "timedate"
    service = "org.freedesktop.timedate1"
    path = "/org/freedesktop/timedate1"
    control_interface = "phone.TimeDate"

    def set_zone(self, zone):
        self.control.call("SetZone", "s", zone)

    def use_network_time(self, used):
        self.control.call("SetNetworkTime", "b", used)


class HomeScreen(HostService):
    """The app grid's model."""

    template = "homescreen"
    service = "org.orcadesk.gloss"
    path = "/LauncherModel"


class Unit(HostService):
    """systemd with the unit "umbravm.service", which runs the simulated runtime."""

    template = "systemd"
    service = "org.freedesktop.systemd1"
    path = "/org/freedesktop/systemd1"
    control_interface = "phone.Unit"

    unit_path = "/org/freedesktop/systemd1/unit/umbravm_2eservice"
    unit_name = "umbravm.service"

    def __init__(self, bus, start=True):
        super().__init__(bus, start)
        self._manager = BusObject(bus, self.service, self.path, self.service + ".Manager")
        self._properties = BusObject(bus, self.service, self.unit_path,
                                     "org.freedesktop.DBus.Properties")

    def set_command(self, command, control_socket):
        """What the unit runs from its next start on."""
        output = str(self.process.output_path.with_name("runtime.log"))
        self.control.call("SetCommand", "asss", command, str(control_socket), output)

    def start(self):
        self._manager.call("StartUnit", "ss", self.unit_name, "replace")

    def stop_unit(self):
        self._manager.call("StopUnit", "ss", self.unit_name, "replace")

    def state(self):
        return self._properties.call("Get", "ss", self.service + ".Unit", "ActiveState")

    def wait_for_state(self, state, timeout=20):
        wait_for(lambda: self.state() == state, f"the unit's state {state}", timeout)

    def hold_activation(self, held):
        """While held, a starting unit stays "activating"."""
        self.control.call("HoldActivation", "b", held)

    def refuse_load(self, refused):
        self.control.call("RefuseLoadUnit", "b", refused)

    def set_load_state(self, load_state):
        """E.g. "not-found" or "masked"; systemd has an object for such a unit, too."""
        self.control.call("SetLoadState", "s", load_state)

    def kill_runtime(self, number=signal.SIGKILL):
        """Ends the unit's process from outside."""
        self.control.call("Kill", "i", number)

    def show(self, active_state, sub_state):
        """Publishes a state that has nothing to do with the process."""
        self.control.call("Show", "ss", active_state, sub_state)
