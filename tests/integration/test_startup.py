"""Start-up: root, login, session bus, catalogues, staging directory, names on the bus."""

import re
from pathlib import Path

import pytest

from phone.daemon import SERVICE, Daemon
from phone.namespace import USER_ID
from phone.process import open_files
from phone.waiting import wait_for

from daemonsteps import CONFIG, DAEMON, start_runtime
from daemonsteps import SERVICE as SERVICE_CATEGORY
from hostfiles import DOWNLOADS, INCOMING, PACKAGED, owner_and_mode

NOBODY = ["/usr/bin/unshare", "--user"]


def watches_logins(daemon):
    return any("inotify" in file for file in open_files(daemon.process.pid))


def sleeps(daemon):
    status = Path(f"/proc/{daemon.process.pid}/stat").read_text("ascii")
    return status.rsplit(")", 1)[1].split()[0] == "S"


def bus_names(phone):
    return sorted(phone.system_bus.object(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus").call("ListNames"))


def test_only_root_may_run_it(phone):
    phone.login.remove()
    daemon = Daemon(phone.build_directory, prefix=NOBODY)
    assert daemon.process.wait_for_end() == 2
    program = phone.build_directory / "sim" / "bramd"
    assert daemon.process.output == f"{program}: Not running as root, exiting.\n"


def test_it_ends_with_3_when_logins_cannot_be_watched(phone):
    phone.login.remove()
    daemon = phone.start_daemon(wait=False)
    assert daemon.process.wait_for_end() == 3
    daemon.log.expect("Failed to monitor for seat changes", "warning", "default", timeout=0)


@pytest.mark.phone(logged_in=False)
def test_it_waits_for_a_login_before_it_touches_a_bus(phone):
    names = bus_names(phone)
    daemon = phone.start_daemon(wait=False)
    wait_for(lambda: watches_logins(daemon) and sleeps(daemon), "the wait for a login")
    phone.login.logout()  # A change on the seat that logs nobody in.
    wait_for(lambda: sleeps(daemon), "the wait for a login")
    assert bus_names(phone) == names

    phone.login.login()

    daemon.wait_until_served(phone.system_bus)
    assert not watches_logins(daemon)


def test_it_talks_to_the_bus_of_the_user_on_the_seat(phone):
    phone.start_daemon({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/run/nowhere"})
    start_runtime(phone)
    broken = DOWNLOADS / "broken.apk"
    broken.write_bytes(b"no archive")
    assert phone.bramd.call("installFile", "s", str(broken))
    assert phone.notifications.wait_for_notice()
    assert f"/run/user/{USER_ID}/" in phone.session_bus.address


def test_a_second_instance_ends_with_1(phone):
    first = phone.start_daemon()
    second = phone.start_daemon(wait=False)
    assert second.process.wait_for_end() == 1
    second.log.expect(re.compile(r'Cannot register D-Bus service at "?com\.corvo\.bramd"?'),
                      "critical", DAEMON, timeout=0)
    assert first.process.running
    assert phone.bramd.call("getAndroidVersionData") == (28, "9", "2021-05-05")


def test_without_a_system_bus_it_ends_with_1(phone):
    daemon = phone.start_daemon({"DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/run/nowhere"}, wait=False)
    assert daemon.process.wait_for_end() == 1
    daemon.log.expect('Cannot register object at  "/com/corvo/bramd"', "critical", DAEMON,
                      timeout=0)
    for record in daemon.log.records:
        record.claimed |= record.category != DAEMON  # What others say about the missing bus.


def test_the_staging_directory_is_emptied_before_the_names_are_taken(phone):
    phone.start_daemon()
    leftover = INCOMING / "old.apk"
    leftover.write_bytes(b"left over")
    second = phone.start_daemon(wait=False)
    assert second.process.wait_for_end() == 1
    second.log.expect(f'Removing old incoming file: "{leftover}"', timeout=0)
    second.log.claim_all(re.compile("Cannot register D-Bus service at .*"), "critical", DAEMON)
    assert not leftover.exists()


def test_it_can_be_started_again_when_it_has_ended(phone):
    phone.start_daemon()
    phone.stop_daemon()
    phone.start_daemon()
    assert phone.system_bus.has_owner(SERVICE)


def test_leftovers_of_an_earlier_run_are_not_installed(phone):
    (INCOMING / "directory.apk").mkdir(parents=True)
    leftovers = [INCOMING / "old.apk", INCOMING / "old.apk.tmp"]
    for leftover in leftovers:
        leftover.write_bytes(b"left over")
    log = phone.start_daemon().log
    for leftover in leftovers:
        assert not leftover.exists()
        log.expect(f'Removing old incoming file: "{leftover}"', category=DAEMON)
    assert (INCOMING / "directory.apk").is_dir()
    start_runtime(phone)
    assert not phone.runtime.transactions("umbra", 2)


def test_staging_directories_are_made(phone):
    phone.start_daemon()
    assert owner_and_mode(INCOMING) == (0, 0, 0o755)
    assert PACKAGED.is_dir()


def test_the_staging_directorys_owner_and_mode_are_restored(phone):
    INCOMING.mkdir(parents=True)
    INCOMING.chmod(0o777)
    phone.start_daemon()
    assert owner_and_mode(INCOMING) == (0, 0, 0o755)


def test_the_data_root_can_be_elsewhere(phone, tmp_path):
    root = tmp_path / "android"
    log = phone.start_daemon({"ANDROID_DATA_ROOT": str(root)}).log
    log.expect(f'Using custom path for apps + data:  "{root}"', "debug", CONFIG)
    assert (root / "data/xrs-staging/app/incoming").is_dir()
    assert (root / "data/xrs-staging/app/packaged").is_dir()
    assert not INCOMING.exists()


def test_it_serves_when_the_runtimes_unit_is_unknown(phone):
    phone.unit.refuse_load(True)
    log = phone.start_daemon().log
    log.expect('Could not find Umbra VM service: "Access denied"', "critical", SERVICE_CATEGORY)
    assert phone.bramd.call("getAndroidVersionData") == (28, "9", "2021-05-05")


def test_the_state_of_the_unit_is_logged(phone):
    log = phone.start_daemon().log
    log.expect('Umbra VM is "inactive" ( "dead" )', "debug", SERVICE_CATEGORY)
    phone.start_runtime()
    log.expect('Umbra VM is "activating" ( "start" )', "debug", SERVICE_CATEGORY)
    log.expect('Umbra VM is "active" ( "running" )', "debug", SERVICE_CATEGORY)
