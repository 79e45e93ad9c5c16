"""Request data as the runtime writes it, for announcements that no real APK would cause."""

import struct


def int32(value):
    return struct.pack("<i", value)


def string16(text):
    """None is the null string."""
    if text is None:
        return int32(-1)
    units = text.encode("utf-16-le", "surrogatepass")
    return int32(len(units) // 2) + _padded(units + b"\0\0")


def byte_array(data):
    return int32(-1) if data is None else int32(len(data)) + _padded(data)


def launcher(package, activity, label, version="1.0", icon=b"\x89PNG"):
    """Request data of "launcher added" (code 1)."""
    return b"".join(map(string16, (package, activity, label, version))) + byte_array(icon)


def handler(package, activity, label, caption="", version="1.0", mime_types="",
            share_mime_types="", multi=False, schemes="", url_handlers="", extra=False,
            icon=b"\x89PNG"):
    """Request data of "handler added" (code 4)."""
    return b"".join([
        *map(string16, (package, activity, label, caption, version, mime_types,
                        share_mime_types)),
        int32(multi), string16(schemes), string16(url_handlers), int32(extra),
        byte_array(icon)])


ADD_LAUNCHER, COMPLETE, REMOVE_PACKAGE, ADD_HANDLER = 1, 2, 3, 4


def _padded(data):
    return data + bytes(-len(data) % 4)
