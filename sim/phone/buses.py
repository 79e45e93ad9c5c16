"""The phone's message buses, and objects on them."""

import socket
from pathlib import Path

from gi.repository import Gio, GLib

from .namespace import USER_ID
from .process import Process
from .waiting import wait_for

CALL_TIMEOUT_MS = 30000

SYSTEM_SOCKET = Path("/run/dbus/system_bus_socket")
SESSION_SOCKET = Path(f"/run/user/{USER_ID}/dbus/user_bus_socket")

# Everybody may own and call everything: what is guarded on the phone is guarded by its services.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>{kind}</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*" eavesdrop="true"/>
  </policy>
  <limit name="reply_timeout">60000</limit>
  {extra}
</busconfig>
"""

NOBODY_CALLS = """<policy context="mandatory">
    <deny send_destination="{service}"/>
  </policy>"""


class BusConnection:
    """Our connection to a message bus ("system" or "session") that somebody runs."""

    def __init__(self, kind, address):
        self.kind = kind
        self.address = address
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.connection.set_exit_on_close(False)
        self._bus = self.object("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                "org.freedesktop.DBus")

    def object(self, service, path, interface):
        return BusObject(self, service, path, interface)

    def has_owner(self, name):
        return self._bus.call("NameHasOwner", "s", name)

    def wait_for_owner(self, name, timeout=10):
        wait_for(lambda: self.has_owner(name), f"an owner of {name}", timeout)

    def wait_until_ownerless(self, name, timeout=10):
        wait_for(lambda: not self.has_owner(name), f"the end of every owner of {name}", timeout)

    def stop(self):
        if not self.connection.is_closed():
            self.connection.close_sync(None)


class Bus(BusConnection):
    """A dbus-daemon of the phone's own and our connection to it."""

    def __init__(self, kind, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self._socket = path
        self._configuration = Path(f"/run/phone/{kind}-bus.conf")
        self._configuration.parent.mkdir(parents=True, exist_ok=True)
        self._configure(kind)
        self.process = Process(f"{kind}-bus", ["/usr/bin/dbus-daemon", "--nofork", "--nopidfile",
                                               f"--config-file={self._configuration}"])
        wait_for(lambda: _answers(path) or not self.process.running, lambda: self.process)
        super().__init__(kind, f"unix:path={path}")

    def forbid_calls(self, service):
        """From now on nobody may call the service, as a policy may have it for some users."""
        self._configure(self.kind, NOBODY_CALLS.format(service=service))
        self._bus.call("ReloadConfig")

    def stop(self):
        super().stop()
        self.process.stop()

    def _configure(self, kind, extra=""):
        self._configuration.write_text(
            CONFIGURATION.format(kind=kind, socket=self._socket, extra=extra), encoding="utf-8")


def _answers(path):
    """A socket can be seen a moment before it can be connected to."""
    with socket.socket(socket.AF_UNIX) as connection:
        return connection.connect_ex(str(path)) == 0


class BusObject:
    """One interface of a remote object."""

    def __init__(self, bus, service, path, interface):
        self._bus = bus
        self.service, self.path, self.interface = service, path, interface

    def call(self, method, signature="", *arguments, timeout_ms=CALL_TIMEOUT_MS):
        """Calls a method; signature lists its arguments' types. Returns the reply's value, a tuple
        when it has several, None when it has none. A D-Bus error is raised as GLib.Error."""
        values = GLib.Variant(f"({signature})", arguments) if signature else None
        reply = self._bus.connection.call_sync(
            self.service, self.path, self.interface, method, values, None,
            Gio.DBusCallFlags.NO_AUTO_START, timeout_ms, None).unpack()
        return reply[0] if len(reply) == 1 else (reply or None)

    def start_call(self, method, signature="", *arguments):
        """Like call(), but returns at once a list, which holds the reply once it is there."""
        results = []
        values = GLib.Variant(f"({signature})", arguments) if signature else None

        def finished(connection, result):
            try:
                reply = connection.call_finish(result).unpack()
                results.append(reply[0] if len(reply) == 1 else (reply or None))
            except GLib.Error as error:
                results.append(error)

        self._bus.connection.call(
            self.service, self.path, self.interface, method, values, None,
            Gio.DBusCallFlags.NO_AUTO_START, CALL_TIMEOUT_MS, None, finished)
        return results

    def collect_signal(self, name):
        """A list to which the arguments (a tuple) of every such signal from now on are added."""
        received = []
        self._bus.connection.signal_subscribe(
            self.service, self.interface, name, self.path, None, Gio.DBusSignalFlags.NONE,
            lambda *details: received.append(details[5].unpack()))
        return received

    def introspection(self):
        """The object's introspection data, an XML text."""
        other = BusObject(self._bus, self.service, self.path,
                          "org.freedesktop.DBus.Introspectable")
        return other.call("Introspect")
