"""Programs of the host as people and desktops run them, with the tools of this build in reach."""

import os
import subprocess
from pathlib import Path

from phone.buses import SESSION_SOCKET, SYSTEM_SOCKET

TIMEOUT_S = 60


def run(*words, cwd="/", **environment):
    """Runs a program until it ends; its output is text."""
    return subprocess.run([os.fspath(word) for word in words], check=False, cwd=cwd,
                          capture_output=True, text=True, timeout=TIMEOUT_S,
                          env=_environment(environment))


def start(*words):
    """Starts a program whose output is for communicate()."""
    return subprocess.Popen([os.fspath(word) for word in words], text=True, cwd="/",
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=_environment({}))


# For tools that are built with the leak sanitizer.
LEAKS = (f"suppressions={Path(__file__).resolve().parent / 'leaks-of-tools.supp'}"
         ":print_suppressions=0")


def _environment(added):
    return {**os.environ, "LSAN_OPTIONS": LEAKS, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={SYSTEM_SOCKET}",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={SESSION_SOCKET}", **added}
