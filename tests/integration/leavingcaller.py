"""usage: leavingcaller.py BUS METHOD ARGUMENT [COMMAND...]

Sends a call with one string to com.corvo.bramd, prints its own name on the bus, and does not wait
for the answer: the process ends, or becomes COMMAND, which keeps the connection.
"""

import os
import sys

from gi.repository import Gio, GLib

address, method, argument, *command = sys.argv[1:]
connection = Gio.DBusConnection.new_for_address_sync(
    address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
    | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
call = Gio.DBusMessage.new_method_call("com.corvo.bramd", "/com/corvo/bramd", "com.corvo.bramd",
                                       method)
call.set_body(GLib.Variant("(s)", (argument,)))
connection.send_message(call, Gio.DBusSendMessageFlags.NONE)
connection.flush_sync(None)
print(connection.get_unique_name(), flush=True)
if command:
    os.set_inheritable(connection.get_stream().get_socket().get_fd(), True)
    os.execv(command[0], command)
