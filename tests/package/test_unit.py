"""The systemd units, as systemd itself judges them without running them."""

import os
import subprocess

import pytest

UNIT = "lib/systemd/system/bramd.service"
MOST_EXPOSURE_IN_TENTHS = 30

# What the daemon's work relies on, and how it is confined; all that the unit sets by these names.
REQUIRED = {
    "Type": ["dbus"],
    "BusName": ["com.corvo.bramd"],
    "UMask": ["0022"],
    "TimeoutStartSec": ["infinity"],
    "WatchdogSec": [],
    "Restart": ["on-failure"],
    "RestartPreventExitStatus": ["2"],
    "WantedBy": ["multi-user.target"],
    "ProtectSystem": ["strict"],
    "ProtectHome": ["read-only"],
    "ReadOnlyPaths": ["/run"],
    "ReadWritePaths": ["/usr/share/applications", "/usr/share/bramd/partnerspace",
                       "/usr/share/corvo-settings/entries", "-/home/.android"],
    "StateDirectory": ["bramd"],
    "DevicePolicy": ["closed"],
    "DeviceAllow": ["/dev/marshhopper rw"],
    "CapabilityBoundingSet": ["CAP_CHOWN CAP_DAC_OVERRIDE CAP_FOWNER CAP_SETGID CAP_SETUID"],
    "RestrictAddressFamilies": ["AF_UNIX"],
    "SystemCallFilter": ["@system-service", "~@resources @keyring @memlock"],
    # With these it would be blind to its callers, to their files, and to the runtime's device; and
    # the runtime could not be offered.
    "ProtectProc": [],
    "PrivateTmp": [],
    "PrivateDevices": [],
    "PrivateUsers": [],
    "NoNewPrivileges": [],
}


def analyze(*arguments, **environment):
    return subprocess.run(["systemd-analyze", *map(str, arguments)], check=False,
                          capture_output=True, text=True, env={**os.environ, **environment})


def settings(path):
    """The lines of a unit that set something, in their order."""
    lines = path.read_text(encoding="utf-8").splitlines()
    return [line for line in lines if "=" in line and not line.startswith("#")]


def test_the_daemon_is_confined_well_enough(installed):
    result = analyze("security", "--offline=true", "--no-pager",
                     f"--threshold={MOST_EXPOSURE_IN_TENTHS}", installed / UNIT)
    assert result.returncode == 0, result.stdout
    assert "Overall exposure level for bramd.service" in result.stdout


def test_systemd_understands_every_line_of_the_unit(installed, tmp_path):
    unit = tmp_path / "bramd.service"
    text = (installed / UNIT).read_text(encoding="utf-8")
    unit.write_text(text.replace("=/usr/sbin/", f"={installed}/usr/sbin/"), encoding="utf-8")
    result = analyze("verify", "--man=no", "--recursive-errors=no", unit)
    assert (result.returncode, result.stderr) == (0, "")


def test_systemd_understands_the_address_that_is_added_to_the_users_bus(installed):
    added = installed / "usr/lib/systemd/user"
    result = analyze("--user", "verify", "--man=no", "--recursive-errors=no",
                     "/usr/lib/systemd/user/dbus.socket",
                     SYSTEMD_UNIT_PATH=f"{added}:", XDG_RUNTIME_DIR="/run")
    assert "bramd" not in result.stderr
    assert settings(added / "dbus.socket.d/bramd.conf") == [
        "ListenStream=%t/dbus/user_bus_socket"]


@pytest.mark.parametrize("name", REQUIRED)
def test_the_unit_sets_what_is_required(installed, name):
    values = [line.partition("=")[2] for line in settings(installed / UNIT)
              if line.startswith(f"{name}=")]
    assert values == REQUIRED[name]


def test_the_boot_does_not_wait_for_a_login(installed):
    """systemd orders a target after what it wants, except for what is ordered the other way."""
    lines = settings(installed / UNIT)
    after = [line for line in lines if line.startswith("After=")]
    assert any("multi-user.target" in line.split("=")[1].split() for line in after)


def test_a_call_starts_the_unit(installed):
    lines = settings(installed / "usr/share/dbus-1/system-services/com.corvo.bramd.service")
    assert "SystemdService=bramd.service" in lines
    assert "Name=com.corvo.bramd" in lines
