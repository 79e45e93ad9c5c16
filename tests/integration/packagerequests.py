"""What the daemon must send into the runtime for an install or a removal, byte by byte."""

import struct

from parcels import int32, string16

PACKAGE_MANAGER = "android.content.pm.IPackageManager"
UMBRA_SERVICE = "umbra.applications.IUmbraService"

INSTALL_CODE_27 = 60
INSTALL_CODE_UMBRA = 2
DELETE_CODES = {27: 64, 28: 63, 29: 66, 30: 66}

HANDLE, NULL_OBJECT = 0x73682a85, 0x73622a85
OBJECT_SIZE = 24


def token_size(descriptor, sdk):
    """Policy word, from SDK 29 on the work source, and the descriptor."""
    return (4 if sdk < 29 else 8) + len(string16(descriptor))


def split_at_object(transaction):
    """(bytes before, type, handle or id, bytes after) of the one object in a request."""
    data = bytes.fromhex(transaction["data"])
    offset = transaction["objects"][0] if transaction["objects"] else data.index(
        struct.pack("<I", NULL_OBJECT))
    kind, _flags, handle, _cookie = struct.unpack_from("<IIQQ", data, offset)
    return data[:offset], kind, handle, data[offset + OBJECT_SIZE:]


def check_token(data, descriptor, sdk):
    size = token_size(descriptor, sdk)
    expected = (b"" if sdk < 29 else int32(-1)) + string16(descriptor)
    assert data[4:size] == expected, data.hex()
    return data[size:]


def check_install(runtime, path, silent=False):
    """The newest install request is for this path of the runtime's view."""
    if runtime.sdk == 27:
        service, code, descriptor = "package", INSTALL_CODE_27, PACKAGE_MANAGER
        rest = int32(0x42) + string16(None) + int32(0)
    else:
        service, code, descriptor, rest = "umbra", INSTALL_CODE_UMBRA, UMBRA_SERVICE, b""
    transaction = runtime.wait_for_transaction(service, code, len(installs(runtime)) or 1)
    assert not transaction["oneway"]
    before, kind, identity, after = split_at_object(transaction)
    assert check_token(before, descriptor, runtime.sdk) == string16(path)
    check_object(kind, identity, silent)
    assert after == rest


def check_removal(runtime, package, silent=True):
    """The newest removal request is for this package."""
    code = DELETE_CODES[runtime.sdk]
    transaction = runtime.wait_for_transaction("package", code, len(removals(runtime)) or 1)
    assert not transaction["oneway"]
    before, kind, identity, after = split_at_object(transaction)
    assert check_token(before, PACKAGE_MANAGER, runtime.sdk) == string16(package) + int32(-1)
    check_object(kind, identity, silent)
    assert after == int32(0) + int32(2)


def check_object(kind, identity, silent):
    """A request whose result nobody wants to hear carries a null object."""
    if silent:
        assert (kind, identity) == (NULL_OBJECT, 0)
    else:
        assert kind == HANDLE
        assert identity != 0


def installs(runtime):
    if runtime.sdk == 27:
        return runtime.transactions("package", INSTALL_CODE_27)
    return runtime.transactions("umbra", INSTALL_CODE_UMBRA)


def removals(runtime):
    return runtime.transactions("package", DELETE_CODES[runtime.sdk])


def install_paths(runtime):
    """The paths that the runtime was asked to install, in order."""
    descriptor = PACKAGE_MANAGER if runtime.sdk == 27 else UMBRA_SERVICE
    return [_first_string(transaction, descriptor, runtime.sdk)
            for transaction in installs(runtime)]


def removed_packages(runtime):
    return [_first_string(transaction, PACKAGE_MANAGER, runtime.sdk)
            for transaction in removals(runtime)]


def _first_string(transaction, descriptor, sdk):
    data = bytes.fromhex(transaction["data"])[token_size(descriptor, sdk):]
    length = struct.unpack_from("<i", data)[0]
    return data[4:4 + 2 * length].decode("utf-16-le")
