"""usage: busservice.py ADDRESS
Owns com.corvo.bramd on a bus, answers one method of the real interface, and emits one signal."""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib


class Service(dbus.service.Object):
    """Stands in for the daemon: the policy of the bus is about names, not about who has them."""

    @dbus.service.method("com.corvo.bramd", out_signature="t")
    def getAndroidAppDataUsage(self):  # pylint: disable=invalid-name
        self.appClosed("org.example.app")
        return 42

    @dbus.service.signal("com.corvo.bramd", signature="s")
    def appClosed(self, name):  # pylint: disable=invalid-name
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.bus.BusConnection(sys.argv[1])
name = dbus.service.BusName("com.corvo.bramd", bus)
service = Service(bus, "/com/corvo/bramd")
print("serving", flush=True)
GLib.MainLoop().run()
