"""python3-dbusmock template: the desktop's notification service. It keeps every notice."""

import dbus

BUS_NAME = "org.freedesktop.Notifications"
MAIN_OBJ = "/org/freedesktop/Notifications"
MAIN_IFACE = "org.freedesktop.Notifications"
SYSTEM_BUS = False


def load(mock, _parameters):
    mock.last_id = 0


@dbus.service.method(MAIN_IFACE, in_signature="susssasa{sv}i", out_signature="u")
def Notify(self, _application, replaces, _icon, _summary, _body, _actions, _hints, _timeout):
    if replaces:
        return replaces
    self.last_id += 1
    return dbus.UInt32(self.last_id)


@dbus.service.method(MAIN_IFACE, in_signature="u", out_signature="")
def CloseNotification(self, number):
    self.EmitSignal(MAIN_IFACE, "NotificationClosed", "uu", [number, dbus.UInt32(3)])


@dbus.service.method(MAIN_IFACE, in_signature="", out_signature="as")
def GetCapabilities(_self):
    return ["body", "icon-static"]


@dbus.service.method(MAIN_IFACE, in_signature="", out_signature="ssss")
def GetServerInformation(_self):
    return "simulated phone", "bramd", "1.0", "1.2"
