"""Who may call the daemon, and what parental controls forbid."""

import pytest

from hostfiles import traces
from phone.waiting import wait_for

from realphone import OTHER_USER, PATIENCE_S, USER, as_user, run
from steps import call, download, install, request, start_runtime, wait_for_entries

# What is asked for where only the asking counts.
NOTHING = "org.example.nothing"


@pytest.fixture(name="parental_controls")
def parental_controls_fixture():
    """Sets the app filter of the phone's user; gone with the test."""
    def set_filter(*arguments):
        run("malcontent-client", "set-app-filter", USER, *arguments)
    yield set_filter
    run("malcontent-client", "set-app-filter", USER, "--allow-user-installation")


def test_a_user_outside_the_group_is_refused_by_the_bus(phone):
    since = phone.daemon.log.mark()
    done = call("removeFile", NOTHING, OTHER_USER)
    assert done.returncode != 0
    assert "Access denied" in done.stderr, done.stderr
    assert phone.daemon.log.count(f'removeFile: "{NOTHING}"', since) == 0


@pytest.mark.parametrize("group", ["users", "disk", "privileged"])
def test_members_of_these_groups_may_call(phone, group):
    since = phone.daemon.log.mark()
    run("usermod", "--append", "--groups", group, OTHER_USER)
    try:
        assert request("removeFile", NOTHING, OTHER_USER)
        phone.daemon.log.expect(f'removeFile: "{NOTHING}"', since=since)
    finally:
        run("gpasswd", "--delete", OTHER_USER, group)


def test_nobody_but_root_may_own_the_name(phone):
    done = as_user(USER, "busctl", "--system", "call", "org.freedesktop.DBus",
                   "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName", "su",
                   "com.corvo.bramd", "0", check=False)
    assert done.returncode != 0
    assert "Access denied" in done.stderr, done.stderr
    assert phone.daemon.pid


def test_a_child_may_neither_install_nor_remove(phone, parental_controls):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    before = traces()
    parental_controls("--disallow-user-installation")
    assert not request("installFile", download("papertrail"))
    notice = phone.notifications.wait_for_notice(2, timeout=PATIENCE_S)
    assert notice["hints"]["image-path"] == "icon-lock-warning"
    assert not request("removeFile", "org.example.weather")
    assert traces() == before
    phone.daemon.log.expect("APK installation prohibited", "critical")
    # Whom the policy does not bind is known by the owner and the group of the caller's directory in
    # /proc, which the daemon has to be able to see.
    assert request("removeFile", NOTHING, "root")
    assert request("removeFile", NOTHING, group="disk")
    assert not request("removeFile", NOTHING)
    for _request in range(2):
        phone.daemon.log.expect("APK uninstallation prohibited", "critical")
    parental_controls("--allow-user-installation")
    assert request("removeFile", "org.example.weather")
    wait_for(lambda: not traces(), "the end of the app", PATIENCE_S)
