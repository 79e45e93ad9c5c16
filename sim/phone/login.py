"""The login state that sd-login's library reads: who is active on "seat0"."""

import os
from pathlib import Path

from .namespace import USER, USER_ID

SYSTEMD = Path("/run/systemd")
SESSION = "1"


class LoginState:
    """The files that systemd-logind keeps under /run/systemd."""

    def __init__(self):
        """A running logind: a seat on which nobody is logged in."""
        for directory in ("seats", "sessions", "users"):
            (SYSTEMD / directory).mkdir(parents=True, exist_ok=True)
        self.logout()

    def login(self, uid=USER_ID):
        _write("users/%d" % uid, {
            "NAME": USER, "STATE": "active", "STOPPING": "no", "RUNTIME": f"/run/user/{uid}",
            "SESSIONS": SESSION, "SEATS": "seat0", "ACTIVE_SESSIONS": SESSION,
            "ONLINE_SESSIONS": SESSION, "ACTIVE_SEATS": "seat0", "ONLINE_SEATS": "seat0",
            "DISPLAY": SESSION})
        _write(f"sessions/{SESSION}", {
            "UID": uid, "USER": USER, "ACTIVE": 1, "IS_DISPLAY": 1, "STATE": "active",
            "REMOTE": 0, "TYPE": "wayland", "CLASS": "user", "SEAT": "seat0", "VTNR": 1})
        self._write_seat({"ACTIVE": SESSION, "ACTIVE_UID": uid, "SESSIONS": SESSION, "UIDS": uid})

    def logout(self):
        for directory in ("sessions", "users"):
            for path in (SYSTEMD / directory).iterdir():
                path.unlink()
        self._write_seat({})

    def remove(self):
        """As on a machine without logind: logins cannot be watched."""
        self.logout()
        (SYSTEMD / "seats/seat0").unlink()
        for directory in ("seats", "sessions", "users"):
            (SYSTEMD / directory).rmdir()

    @staticmethod
    def _write_seat(values):
        _write("seats/seat0", {"IS_SEAT0": 1, "CAN_MULTI_SESSION": 1, "CAN_TTY": 1,
                               "CAN_GRAPHICAL": 1, **values})


def _write(name, values):
    """Watchers wait for a file to be moved in, as logind does it."""
    path = SYSTEMD / name
    temporary = path.with_name(".#" + path.name)
    lines = "".join(f"{key}={value}\n" for key, value in values.items())
    temporary.write_text("# Like the files of systemd-logind\n" + lines, encoding="utf-8")
    os.replace(temporary, path)
