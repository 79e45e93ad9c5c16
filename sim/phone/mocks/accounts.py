"""python3-dbusmock template: the accounts service with the parental controls' app filter.

The interface phone.Accounts is for whoever drives the phone.
"""

import dbus
import dbus.service

from phone.mocks.plainobject import PlainObject
from phone.namespace import USER, USER_ID

BUS_NAME = "org.freedesktop.Accounts"
MAIN_OBJ = "/org/freedesktop/Accounts"
MAIN_IFACE = "org.freedesktop.Accounts"
SYSTEM_BUS = True

USER_PATH = f"/org/freedesktop/Accounts/User{USER_ID}"
USER_IFACE = "org.freedesktop.Accounts.User"
FILTER_IFACE = "com.endlessm.ParentalControls.AppFilter"
CONTROL_IFACE = "phone.Accounts"


def load(mock, _parameters):
    mock.user = User(mock.bus_name)


class User(PlainObject):
    """The one user's object, which answers as AccountsService does."""

    def __init__(self, bus_name):
        super().__init__(bus_name, USER_PATH)
        self.mode = "answer"
        self.properties = {USER_IFACE: {"Uid": dbus.UInt64(USER_ID), "UserName": USER}}

    def allow(self, allowed):
        self.properties[FILTER_IFACE] = {
            "AllowUserInstallation": dbus.Boolean(allowed),
            "AllowSystemInstallation": dbus.Boolean(False),
            "AppFilter": dbus.Struct((False, dbus.Array([], "s")), signature="bas")}

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v",
                         async_callbacks=("reply", "fail"))
    def Get(self, interface, name, reply, fail):
        self._answer(interface, lambda properties: properties[name], reply, fail)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}",
                         async_callbacks=("reply", "fail"))
    def GetAll(self, interface, reply, fail):
        self._answer(interface, dict, reply, fail)

    def _answer(self, interface, pick, reply, fail):
        if self.mode == "hang":
            return
        if self.mode == "fail":
            fail(_error("org.freedesktop.DBus.Error.Failed", "The accounts are not readable"))
        elif interface not in self.properties:
            fail(_error("org.freedesktop.DBus.Error.InvalidArgs",
                        f"No such interface “{interface}”"))
        else:
            reply(pick(self.properties[interface]))


def _error(name, text):
    return dbus.exceptions.DBusException(text, name=name)


@dbus.service.method(MAIN_IFACE, in_signature="x", out_signature="o")
def FindUserById(_self, uid):
    if uid != USER_ID:
        raise _error("org.freedesktop.Accounts.Error.Failed",
                     f"Failed to look up user with uid {uid}.")
    return dbus.ObjectPath(USER_PATH)


@dbus.service.method(CONTROL_IFACE, in_signature="b", out_signature="")
def Allow(self, allowed):
    """Sets up parental controls: whether the user may install apps."""
    self.user.allow(bool(allowed))


@dbus.service.method(CONTROL_IFACE, in_signature="", out_signature="")
def RemoveFilter(self):
    """No parental controls on this phone."""
    self.user.properties.pop(FILTER_IFACE, None)


@dbus.service.method(CONTROL_IFACE, in_signature="s", out_signature="")
def SetMode(self, mode):
    """"answer", "fail" (with an error) or "hang" (never a reply)."""
    self.user.mode = str(mode)
