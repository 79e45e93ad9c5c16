"""python3-dbusmock template: PackageKit with a set of installed packages.

The interface phone.PackageKit is for whoever drives the phone.
"""

import dbus
import dbus.service
from gi.repository import GLib

from phone.mocks.plainobject import PlainObject

BUS_NAME = "org.freedesktop.PackageKit"
MAIN_OBJ = "/org/freedesktop/PackageKit"
MAIN_IFACE = "org.freedesktop.PackageKit"
SYSTEM_BUS = True

TRANSACTION_IFACE = "org.freedesktop.PackageKit.Transaction"
CONTROL_IFACE = "phone.PackageKit"

# Values of PackageKit's public enumerations (pk-enum.h).
INFO_INSTALLED, INFO_REMOVING = 1, 13
EXIT_SUCCESS, EXIT_FAILED = 1, 2
ROLE_REMOVE_PACKAGES, ROLE_RESOLVE = 14, 17


def load(mock, _parameters):
    mock.installed = {}
    mock.failures = {}
    mock.transactions = 0
    mock.calls = []
    mock.AddProperties(MAIN_IFACE, {
        "VersionMajor": dbus.UInt32(1), "VersionMinor": dbus.UInt32(2),
        "VersionMicro": dbus.UInt32(6), "BackendName": "simulated", "Locked": False,
        "BackendDescription": "simulated", "BackendAuthor": "bramd", "DistroId": "phone;1;x",
        "Roles": dbus.UInt64((1 << ROLE_REMOVE_PACKAGES) | (1 << ROLE_RESOLVE)),
        "Groups": dbus.UInt64(0), "Filters": dbus.UInt64(0xffffff),
        "MimeTypes": dbus.Array([], "s"), "NetworkState": dbus.UInt32(2)})


class Transaction(PlainObject):
    """One transaction: it answers a single role and is gone."""

    def __init__(self, packagekit, path):
        super().__init__(packagekit.bus_name, path)
        self._packagekit = packagekit

    @dbus.service.method(TRANSACTION_IFACE, in_signature="as", out_signature="")
    def SetHints(self, hints):
        self._packagekit.calls.append(("SetHints", str(list(map(str, hints)))))

    @dbus.service.method(TRANSACTION_IFACE, in_signature="tas", out_signature="")
    def Resolve(self, package_filter, names):
        self._packagekit.calls.append(("Resolve", f"{int(package_filter)} {_words(names)}"))
        GLib.idle_add(self._resolve, [str(name) for name in names])

    @dbus.service.method(TRANSACTION_IFACE, in_signature="tasbb", out_signature="")
    def RemovePackages(self, flags, package_ids, allow_dependencies, autoremove):
        self._packagekit.calls.append(
            ("RemovePackages", f"{int(flags)} {_words(package_ids)} "
                               f"{bool(allow_dependencies)} {bool(autoremove)}"))
        GLib.idle_add(self._remove, [str(package_id) for package_id in package_ids])

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, _interface):
        return dbus.Dictionary({"Role": dbus.UInt32(0), "Status": dbus.UInt32(0),
                                "Uid": dbus.UInt32(0), "AllowCancel": False}, signature="sv")

    @dbus.service.signal(TRANSACTION_IFACE, signature="uss")
    def Package(self, info, package_id, summary):
        pass

    @dbus.service.signal(TRANSACTION_IFACE, signature="us")
    def ErrorCode(self, code, details):
        pass

    @dbus.service.signal(TRANSACTION_IFACE, signature="uu")
    def Finished(self, exit_code, runtime_ms):
        pass

    @dbus.service.signal(TRANSACTION_IFACE, signature="")
    def Destroy(self):
        pass

    def _resolve(self, names):
        if not self._fails("Resolve"):
            for name in names:
                if name in self._packagekit.installed:
                    self.Package(INFO_INSTALLED, self._packagekit.installed[name], name)
            self._end(EXIT_SUCCESS)
        return False

    def _remove(self, package_ids):
        if not self._fails("RemovePackages"):
            for package_id in package_ids:
                name = package_id.split(";", 1)[0]
                self._packagekit.installed.pop(name, None)
                self.Package(INFO_REMOVING, package_id, name)
            self._end(EXIT_SUCCESS)
        return False

    def _fails(self, role):
        if role not in self._packagekit.failures:
            return False
        self.ErrorCode(*self._packagekit.failures[role])
        self._end(EXIT_FAILED)
        return True

    def _end(self, exit_code):
        self.Finished(exit_code, 1)
        self.Destroy()
        self.remove_from_connection()


def _words(items):
    return ",".join(map(str, items))


@dbus.service.method(MAIN_IFACE, in_signature="", out_signature="o")
def CreateTransaction(self):
    self.transactions += 1
    path = f"/{self.transactions}_simulated"
    Transaction(self, path)
    return dbus.ObjectPath(path)


@dbus.service.method(CONTROL_IFACE, in_signature="ss", out_signature="")
def Install(self, name, package_id):
    """From now on this package is installed on the host."""
    self.installed[str(name)] = str(package_id)


@dbus.service.method(CONTROL_IFACE, in_signature="sus", out_signature="")
def Fail(self, role, code, details):
    """"Resolve" or "RemovePackages" ends with this error; an empty role ends the trouble."""
    self.failures.clear()
    if role:
        self.failures[str(role)] = (code, str(details))


@dbus.service.method(CONTROL_IFACE, in_signature="", out_signature="as")
def InstalledPackages(self):
    return dbus.Array(sorted(self.installed), "s")


@dbus.service.method(CONTROL_IFACE, in_signature="", out_signature="a(ss)")
def TransactionCalls(self):
    """(method, arguments as words) of every call on a transaction."""
    return dbus.Array(self.calls, "(ss)")
