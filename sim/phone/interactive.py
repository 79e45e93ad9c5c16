"""A shell on a running phone, for an engineer."""

import os
import subprocess
import sys

from .phone import HOST_SERVICES, Phone

HINTS = """
This shell runs on the simulated phone; leaving it ends the phone.

  busctl --system call com.corvo.bramd /com/corvo/bramd com.corvo.bramd installFile s /path/to.apk
  busctl --system call com.corvo.bramd /com/corvo/bramd com.corvo.bramd removeFile s PACKAGE
  busctl --system call com.corvo.bramd /com/corvo/bramd com.corvo.bramd launchApp s PACKAGE
  busctl --system call com.corvo.bramd /com/corvo/bramd com.corvo.bramd share 'a{sv}' 3 \\
      resources as 1 /home/phone-user/a.jpg mimeType s image/jpeg \\
      selectedTransferMethodInfo 'a{sv}' 1 methodId s PACKAGE/CLASS
  busctl --system call org.freedesktop.timedate1 /org/freedesktop/timedate1 \\
      phone.TimeDate SetZone s Europe/Berlin
  gdbus monitor --system --dest com.corvo.bramd        (and --session for the user's bus)
  busctl --system call org.freedesktop.systemd1 /org/freedesktop/systemd1 \\
      org.freedesktop.systemd1.Manager StartUnit ss umbravm.service replace
  ls /usr/share/applications /var/lib/bramd /usr/share/corvo-settings/entries
"""


def addresses(phone):
    """The environment in which programs find the phone's buses."""
    return {"DBUS_SYSTEM_BUS_ADDRESS": phone.system_bus.address,
            "DBUS_SESSION_BUS_ADDRESS": phone.session_bus.address}


def run_shell(phone):
    """Says what can be done, runs the user's shell on this terminal and returns its status."""
    print(HINTS)
    if phone.daemon:
        print(f"  tail -f {phone.daemon.process.output_path}        (what bramd logs)\n")
    sys.stdout.flush()
    shell = os.environ.get("SHELL", "/bin/sh")
    environment = {**os.environ, **addresses(phone), "PS1": "phone# "}
    return subprocess.run([shell], env=environment, check=False).returncode


def main(sdk):
    """A phone with every host service and the daemon."""
    with Phone(sdk, services=HOST_SERVICES) as phone:
        phone.start_daemon()
        return run_shell(phone)


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1])))
