"""From the boot to the first login. Comes first: this boot is the one that is looked at."""

from pathlib import Path

from phone.daemon import SERVICE

from realphone import DAEMON_UNIT, PATIENCE_S, SESSION_BUS, show, systemctl
from phone.waiting import wait_for


def test_the_boot_is_complete_while_the_daemon_waits_for_a_login(machine):
    wait_for(lambda: show("multi-user.target", "ActiveState") == "active", "the end of the boot",
             PATIENCE_S)
    wait_for(lambda: machine.daemon.pid, "the daemon", PATIENCE_S)
    assert systemctl("is-enabled", DAEMON_UNIT) == "enabled"
    assert show(DAEMON_UNIT, "ActiveState") == "activating"
    assert not machine.system_bus.has_owner(SERVICE)


def test_a_login_on_the_seat_makes_it_go_on(machine):
    pid = machine.daemon.pid
    machine.log_in()
    machine.wait_until_served()
    assert machine.daemon.pid == pid
    wait_for(lambda: show(DAEMON_UNIT, "ActiveState") == "active", "the unit", PATIENCE_S)
    assert Path(SESSION_BUS.partition("=")[2]).is_socket()


def test_a_daemon_that_is_started_before_a_login_waits_too(machine):
    machine.stop_daemon()
    machine.log_out()
    systemctl("start", "--no-block", DAEMON_UNIT)
    wait_for(lambda: machine.daemon.pid, "the daemon", PATIENCE_S)
    assert not machine.system_bus.has_owner(SERVICE)
    machine.log_in()
    machine.wait_until_served()


def test_a_call_starts_the_daemon(phone):
    phone.stop_daemon()
    reply = phone.system_bus.connection.call_sync(
        SERVICE, "/com/corvo/bramd", SERVICE, "getAndroidVersionData", None, None, 0,
        120000, None)
    assert reply.unpack()[0][0] == phone.runtime.sdk
    assert show(DAEMON_UNIT, "ActiveState") == "active"
