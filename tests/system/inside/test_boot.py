"""From the boot to the first login. Comes before whatever logs in: this boot is looked at."""

from pathlib import Path

from phone.daemon import SERVICE
from phone.process import open_files

from realphone import DAEMON_UNIT, PATIENCE_S, SESSION_BUS, show, systemctl
from phone.waiting import wait_for


# The numbers of poll and ppoll.
POLLS = {"7", "271"}


def sleeps_until_a_login(pid):
    """Whether a process sleeps in a poll, of a file descriptor that logind's files wake. Only then
    it has come to its wait, and what it does not do there it would have done before."""
    process = Path("/proc") / str(pid)
    try:
        opened = open_files(pid)
        call = (process / "syscall").read_text("ascii").split()[0]
    except OSError:  # it has ended
        return False
    return call in POLLS and any("inotify" in name for name in opened)


def wait_until_it_waits(machine):
    wait_for(lambda: sleeps_until_a_login(machine.daemon.pid), "a daemon that waits", PATIENCE_S)
    assert show(DAEMON_UNIT, "ActiveState") == "activating"
    assert not machine.system_bus.has_owner(SERVICE)


def test_the_boot_is_complete_while_the_daemon_waits_for_a_login(machine):
    wait_for(lambda: show("multi-user.target", "ActiveState") == "active", "the end of the boot",
             PATIENCE_S)
    wait_until_it_waits(machine)
    assert systemctl("is-enabled", DAEMON_UNIT) == "enabled"


def test_a_login_on_the_seat_makes_it_go_on(machine):
    pid = machine.daemon.pid
    machine.log_in()
    machine.wait_until_served()
    assert machine.daemon.pid == pid
    wait_for(lambda: show(DAEMON_UNIT, "ActiveState") == "active", "the unit", PATIENCE_S)
    wait_for(Path(SESSION_BUS.partition("=")[2]).is_socket, "the session bus", PATIENCE_S)


def test_a_daemon_that_is_started_before_a_login_waits_too(machine):
    machine.stop_daemon()
    machine.log_out()
    systemctl("start", "--no-block", DAEMON_UNIT)
    wait_until_it_waits(machine)
    machine.log_in()
    machine.wait_until_served()


def test_a_call_starts_the_daemon(phone):
    phone.stop_daemon()
    reply = phone.system_bus.connection.call_sync(
        SERVICE, "/com/corvo/bramd", SERVICE, "getAndroidVersionData", None, None, 0,
        120000, None)
    assert reply.unpack()[0][0] == phone.runtime.sdk
    assert show(DAEMON_UNIT, "ActiveState") == "active"
