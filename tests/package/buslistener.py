"""usage: buslistener.py ADDRESS
Prints "listening", then, for each line of standard input, how many signals of com.corvo.bramd it
has received so far."""

import sys

from gi.repository import Gio, GLib

connection = Gio.DBusConnection.new_for_address_sync(
    sys.argv[1], Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
    | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)


def call_bus(method, arguments=None):
    connection.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         method, arguments, None, Gio.DBusCallFlags.NONE, 30000, None)


received = []
connection.signal_subscribe(None, "com.corvo.bramd", None, None, None,
                            Gio.DBusSignalFlags.NO_MATCH_RULE,
                            lambda *arguments: received.append(arguments))
call_bus("AddMatch", GLib.Variant("(s)", ("type='signal',interface='com.corvo.bramd'",)))
print("listening", flush=True)
for _ in sys.stdin:
    call_bus("GetId")  # what the bus sent before its answer has arrived with the answer
    while GLib.MainContext.default().iteration(False):
        pass
    print(len(received), flush=True)
