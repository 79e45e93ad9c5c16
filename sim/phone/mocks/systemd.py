"""python3-dbusmock template: systemd's manager with the one unit "umbravm.service".

Starting the unit really starts a program, and the unit follows it: "activating" until the program
answers on its control socket, then "active"; "failed" when it dies by itself. As with the real
manager, nobody hears of changes before somebody has called Subscribe.

The interface phone.Unit on the manager's object is for whoever drives the phone.
"""

import os
import signal
import socket
import subprocess

import dbus
from dbusmock import mockobject
from gi.repository import GLib

BUS_NAME = "org.freedesktop.systemd1"
MAIN_OBJ = "/org/freedesktop/systemd1"
MAIN_IFACE = "org.freedesktop.systemd1.Manager"
SYSTEM_BUS = True

UNIT_NAME = "umbravm.service"
UNIT_PATH = "/org/freedesktop/systemd1/unit/umbravm_2eservice"
UNIT_IFACE = "org.freedesktop.systemd1.Unit"
SERVICE_IFACE = "org.freedesktop.systemd1.Service"
CONTROL_IFACE = "phone.Unit"

SUB_STATES = {"inactive": "dead", "activating": "start", "active": "running",
              "deactivating": "stop-sigterm", "failed": "failed"}
LOOK_INTERVAL_MS = 20
STOP_TIMEOUT_MS = 10000


def load(mock, _parameters):
    mock.AddObject(UNIT_PATH, UNIT_IFACE, {
        "Id": UNIT_NAME, "LoadState": "loaded", "UnitFileState": "disabled",
        "ActiveState": "inactive", "SubState": SUB_STATES["inactive"]}, [])
    mock.unit = Unit(mock, mockobject.objects[UNIT_PATH])
    mock.load_refused = False


class Unit:
    """The unit and the process that it runs."""

    def __init__(self, manager, bus_object):
        self._manager = manager
        self._object = bus_object
        self._object.AddProperty(SERVICE_IFACE, "MainPID", dbus.UInt32(0))
        self.subscribed = False
        self.command = []
        self.control_socket = ""
        self.output = "/dev/null"
        self.activation_held = False
        self._process = None
        self._stopping = False
        self._next_job = 1

    @property
    def state(self):
        return str(self._object.props[UNIT_IFACE]["ActiveState"])

    @property
    def file_state(self):
        return str(self._object.props[UNIT_IFACE]["UnitFileState"])

    def job(self, kind):
        path = f"{MAIN_OBJ}/job/{self._next_job}"
        number, self._next_job = self._next_job, self._next_job + 1
        if self.subscribed:
            self._manager.EmitSignal(MAIN_IFACE, "JobNew", "uos", [number, path, UNIT_NAME])
            GLib.idle_add(self._finish_job, number, path, kind)
        return path

    def start(self):
        if self._process:
            return
        self.show("activating")
        with open(self.output, "ab") as output:
            self._process = subprocess.Popen(  # pylint: disable=consider-using-with
                self.command, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                start_new_session=True)
        self._stopping = False
        self._object.UpdateProperties(SERVICE_IFACE, {"MainPID": dbus.UInt32(self._process.pid)})
        GLib.timeout_add(LOOK_INTERVAL_MS, self._look, self._process)

    def stop(self):
        if not self._process:
            self.show("inactive")
            return
        self._stopping = True
        self.show("deactivating")
        # A container takes its time to stop, this program does not: let the news arrive first.
        self._manager.connection.flush()
        self._process.send_signal(signal.SIGTERM)
        self._process.send_signal(signal.SIGCONT)
        GLib.timeout_add(STOP_TIMEOUT_MS, self._insist, self._process)

    def kill(self, number):
        if self._process:
            self._process.send_signal(number)

    def show(self, active_state, sub_state=None):
        """Publishes a state, whether or not it is a new one."""
        self.publish({"ActiveState": active_state,
                      "SubState": sub_state or SUB_STATES.get(active_state, "")})

    def publish(self, properties):
        if self.subscribed:
            self._object.UpdateProperties(UNIT_IFACE, properties)
        else:
            self._object.props[UNIT_IFACE].update(properties)

    def _look(self, process):
        """Follows the process as systemd does; called until it has ended."""
        if process is not self._process:
            return False
        if process.poll() is not None:
            self._process = None
            in_order = self._stopping and process.returncode in (0, -signal.SIGTERM)
            self.show("inactive" if in_order else "failed")
            return False
        if self.state == "activating" and not self.activation_held and self._answers():
            self.show("active")
        return True

    def _answers(self):
        with socket.socket(socket.AF_UNIX) as connection:
            return connection.connect_ex(os.fsencode(self.control_socket)) == 0

    def _insist(self, process):
        if process is self._process:
            process.kill()
        return False

    def _finish_job(self, number, path, _kind):
        self._manager.EmitSignal(MAIN_IFACE, "JobRemoved", "uoss",
                                 [number, path, UNIT_NAME, "done"])
        return False


def _check_name(name):
    if name != UNIT_NAME:
        raise dbus.exceptions.DBusException(
            f"Unit {name} not found.", name="org.freedesktop.systemd1.NoSuchUnit")


@dbus.service.method(MAIN_IFACE, in_signature="", out_signature="")
def Subscribe(self):
    self.unit.subscribed = True


@dbus.service.method(MAIN_IFACE, in_signature="s", out_signature="o")
def LoadUnit(self, name):
    if self.load_refused:
        raise dbus.exceptions.DBusException(
            "Access denied", name="org.freedesktop.DBus.Error.AccessDenied")
    _check_name(name)
    return dbus.ObjectPath(UNIT_PATH)


@dbus.service.method(MAIN_IFACE, in_signature="s", out_signature="s")
def GetUnitFileState(self, name):
    _check_name(name)
    return self.unit.file_state


@dbus.service.method(MAIN_IFACE, in_signature="ss", out_signature="o")
def StartUnit(self, name, _mode):
    _check_name(name)
    self.unit.start()
    return dbus.ObjectPath(self.unit.job("start"))


@dbus.service.method(MAIN_IFACE, in_signature="ss", out_signature="o")
def StopUnit(self, name, _mode):
    _check_name(name)
    self.unit.stop()
    return dbus.ObjectPath(self.unit.job("stop"))


@dbus.service.method(MAIN_IFACE, in_signature="asbb", out_signature="ba(sss)")
def EnableUnitFiles(self, names, _runtime, _force):
    for name in names:
        _check_name(name)
    self.unit.publish({"UnitFileState": "enabled"})
    link = f"/etc/systemd/system/multi-user.target.wants/{UNIT_NAME}"
    return True, [("symlink", link, f"/lib/systemd/system/{UNIT_NAME}")]


@dbus.service.method(MAIN_IFACE, in_signature="asb", out_signature="a(sss)")
def DisableUnitFiles(self, names, _runtime):
    for name in names:
        _check_name(name)
    self.unit.publish({"UnitFileState": "disabled"})
    return [("unlink", f"/etc/systemd/system/multi-user.target.wants/{UNIT_NAME}", "")]


@dbus.service.method(CONTROL_IFACE, in_signature="asss", out_signature="")
def SetCommand(self, command, control_socket, output):
    """What the next start runs, where it answers, and where its output goes."""
    self.unit.command = [str(word) for word in command]
    self.unit.control_socket = str(control_socket)
    self.unit.output = str(output)


@dbus.service.method(CONTROL_IFACE, in_signature="b", out_signature="")
def HoldActivation(self, held):
    """While held, a starting unit stays "activating"."""
    self.unit.activation_held = bool(held)


@dbus.service.method(CONTROL_IFACE, in_signature="b", out_signature="")
def RefuseLoadUnit(self, refused):
    self.load_refused = bool(refused)


@dbus.service.method(CONTROL_IFACE, in_signature="s", out_signature="")
def SetLoadState(self, load_state):
    """What became of reading the unit's file: "loaded", "not-found", "masked", "bad-setting"."""
    self.unit.publish({"LoadState": str(load_state)})


@dbus.service.method(CONTROL_IFACE, in_signature="i", out_signature="")
def Kill(self, number):
    """Ends the unit's process from outside, by a signal."""
    self.unit.kill(number)


@dbus.service.method(CONTROL_IFACE, in_signature="ss", out_signature="")
def Show(self, active_state, sub_state):
    """Publishes a state that has nothing to do with the process."""
    self.unit.show(str(active_state), str(sub_state))
