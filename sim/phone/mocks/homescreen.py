"""python3-dbusmock template: the home screen's launcher model, which keeps what it was told."""

import dbus.service

BUS_NAME = "org.orcadesk.gloss"
MAIN_OBJ = "/LauncherModel"
MAIN_IFACE = "org.orcadesk.gloss.LauncherModel"
SYSTEM_BUS = False


def load(_mock, _parameters):
    pass


@dbus.service.method(MAIN_IFACE, in_signature="ssss", out_signature="")
def updatingStarted(_self, _name, _label, _icon, _path):
    pass


@dbus.service.method(MAIN_IFACE, in_signature="ssss", out_signature="")
def updatingFinished(_self, _name, _label, _icon, _path):
    pass
