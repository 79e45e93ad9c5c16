"""Who may call the daemon, and what parental controls forbid."""

import pytest

from hostfiles import traces
from phone.waiting import wait_for

from realphone import OTHER_USER, PATIENCE_S, USER, as_user, run
from steps import call, download, install, request, start_runtime


@pytest.fixture(name="parental_controls")
def parental_controls_fixture():
    """Sets the app filter of the phone's user; gone with the test."""
    def set_filter(*arguments):
        run("malcontent-client", "set-app-filter", USER, *arguments)
    yield set_filter
    run("malcontent-client", "set-app-filter", USER, "--allow-user-installation")


def test_a_user_outside_the_group_is_refused_by_the_bus(phone):
    done = call("removeFile", "org.example.weather", OTHER_USER)
    assert done.returncode != 0
    assert "Access denied" in done.stderr or "AccessDenied" in done.stderr, done.stderr
    assert phone.daemon.log.count('removeFile: "org.example.weather"') == 0


@pytest.mark.parametrize("group", ["users", "disk", "privileged"])
def test_members_of_these_groups_may_call(phone, group):
    del phone
    run("usermod", "--append", "--groups", group, OTHER_USER)
    try:
        assert call("getUmbraPackageSize", "org.example.weather", OTHER_USER).returncode == 0
    finally:
        run("gpasswd", "--delete", OTHER_USER, group)


def test_nobody_but_root_may_own_the_name(phone):
    done = as_user(USER, "busctl", "--system", "call", "org.freedesktop.DBus",
                   "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName", "su",
                   "com.corvo.bramd", "0", check=False)
    assert done.returncode != 0
    assert "not allowed to own" in done.stderr, done.stderr
    assert phone.daemon.pid


def test_a_child_may_neither_install_nor_remove(phone, parental_controls):
    start_runtime(phone)
    install(phone, "weather")
    before = traces()
    parental_controls("--disallow-user-installation")
    assert not request("installFile", download("papertrail"))
    notice = phone.notifications.wait_for_notice(2, timeout=PATIENCE_S)
    assert notice["hints"]["image-path"] == "icon-lock-warning"
    assert not request("removeFile", "org.example.weather")
    assert traces() == before
    parental_controls("--allow-user-installation")
    assert request("removeFile", "org.example.weather")
    wait_for(lambda: not traces(), "the end of the app", PATIENCE_S)
