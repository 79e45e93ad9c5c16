"""python3-dbusmock template: systemd's time daemon, of which only the time zone matters.

The interface phone.TimeDate is for whoever drives the phone.
"""

import dbus.service

BUS_NAME = "org.freedesktop.timedate1"
MAIN_OBJ = "/org/freedesktop/timedate1"
MAIN_IFACE = "org.freedesktop.timedate1"
SYSTEM_BUS = True

CONTROL_IFACE = "phone.TimeDate"


def load(mock, _parameters):
    mock.AddProperties(MAIN_IFACE, {"Timezone": "Europe/Helsinki", "NTP": dbus.Boolean(True)})


@dbus.service.method(CONTROL_IFACE, in_signature="s", out_signature="")
def SetZone(self, zone):
    """Publishes the zone, whether or not it is a new one."""
    self.UpdateProperties(MAIN_IFACE, {"Timezone": zone})


@dbus.service.method(CONTROL_IFACE, in_signature="b", out_signature="")
def SetNetworkTime(self, used):
    self.UpdateProperties(MAIN_IFACE, {"NTP": used})
