"""Upgrade, removal and purge of the package. Comes last, and leaves it installed as at first."""

from pathlib import Path

from hostfiles import APPLICATIONS, INCOMING
from phone.daemon import SERVICE

from realphone import DAEMON_UNIT, PATIENCE_S, RUNTIME_UNIT, run, systemctl
from steps import (download, install, request, start_runtime, wait_for_entries,
                   wait_until_connected)

PACKAGES = sorted(Path("/opt/bramd-system/packages").glob("*.deb"))
NAMES = [path.name.partition("_")[0] for path in PACKAGES]
OURS = ("/var/lib/bramd", "/usr/share/bramd", "/etc/bramd", "/etc/default/bramd",
        "/usr/share/corvo-settings", "/etc/dbus-1/system.d/com.corvo.bramd-users.conf")


def test_an_upgrade_keeps_the_daemon_and_what_waits_in_it(phone):
    start_runtime(phone)
    systemctl("kill", "--kill-whom=all", "--signal=KILL", RUNTIME_UNIT)
    phone.unit.wait_for_state("failed", PATIENCE_S)
    pid, since = phone.daemon.pid, phone.daemon.log.mark()
    assert request("installFile", download("weather"))  # waits: a failed unit is not started by it
    run("dpkg", "--install", *PACKAGES)
    assert phone.daemon.pid == pid
    assert phone.system_bus.has_owner(SERVICE)
    phone.start_runtime()
    wait_until_connected(phone, since)
    phone.notifications.wait_for_notice(timeout=PATIENCE_S)
    wait_for_entries(1)
    assert [app["package"] for app in phone.runtime.apps()] == ["org.example.weather"]


def test_purge_leaves_nothing(phone):
    start_runtime(phone)
    install(phone, "papertrail")
    wait_for_entries(5)
    run("dpkg", "--remove", *NAMES)
    try:
        assert not phone.system_bus.has_owner(SERVICE)
        assert run("systemctl", "is-active", DAEMON_UNIT, check=False).stdout == "inactive\n"
        run("dpkg", "--purge", *NAMES)
        assert not list(APPLICATIONS.glob("bramd_*"))
        assert "bramd" not in (APPLICATIONS / "mimeinfo.cache").read_text("utf-8")
        assert [path for path in (*map(Path, OURS), INCOMING) if path.exists()] == []
        assert run("find", "/etc", "/usr", "/lib", "/var", "-xdev", "(", "-name", "*bramd*", ")",
                   "-not", "-path", "/var/lib/dpkg/*", "-not", "-path", "/var/log/*", "-not",
                   "-path", "/etc/systemd/system/bramd.service.d*").stdout == ""
    finally:
        run("dpkg", "--install", *PACKAGES)
    phone.wait_until_served()
