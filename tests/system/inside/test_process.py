"""The daemon as a process: its end, its beginnings, and its exit statuses."""

import subprocess

from hostfiles import entries
from launches import launched_packages
from phone.daemon import SERVICE
from phone.waiting import wait_for

from realphone import DAEMON_UNIT, PATIENCE_S, USER, as_user, run, show, systemctl
from steps import install, start_runtime, wait_for_entries, wait_until_connected

PROGRAM = "/usr/sbin/bramd"


def test_it_is_stopped_in_order(phone):
    assert phone.stop_daemon() == 0
    assert show(DAEMON_UNIT, "Result") == "success"
    assert show(DAEMON_UNIT, "ActiveState") == "inactive"


def test_a_second_one_ends_with_1(phone):
    pid = phone.daemon.pid
    done = subprocess.run([PROGRAM], capture_output=True, text=True, check=False, timeout=60)
    assert done.returncode == 1, done.stderr
    assert phone.daemon.pid == pid
    assert phone.system_bus.has_owner(SERVICE)


def test_an_ordinary_user_cannot_run_it():
    done = as_user(USER, PROGRAM, check=False)
    assert (done.returncode, done.stderr) == (2, f"{PROGRAM}: Not running as root, exiting.\n")


def test_it_is_not_started_again_when_it_is_not_root(phone):
    phone.stop_daemon()
    drop_in = "[Service]\nUser=nobody\nStateDirectory=\n"
    run("mkdir", "-p", f"/run/systemd/system/{DAEMON_UNIT}.d")
    with open(f"/run/systemd/system/{DAEMON_UNIT}.d/nobody.conf", "w", encoding="ascii") as file:
        file.write(drop_in)
    try:
        systemctl("daemon-reload")
        run("systemctl", "start", DAEMON_UNIT, check=False)
        assert show(DAEMON_UNIT, "ExecMainStatus") == "2"
        assert show(DAEMON_UNIT, "ActiveState") == "failed"
        assert show(DAEMON_UNIT, "NRestarts") == "0"
    finally:
        run("rm", "-r", f"/run/systemd/system/{DAEMON_UNIT}.d")
        systemctl("daemon-reload")
        systemctl("reset-failed", DAEMON_UNIT)


def test_after_a_crash_it_is_started_again_and_serves_as_before(phone):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    before = entries()
    phone.runtime.forget()
    pid, since = phone.daemon.pid, phone.daemon.log.mark()
    systemctl("kill", "--signal=KILL", DAEMON_UNIT)
    wait_for(lambda: phone.daemon.pid not in (0, pid), "another process", PATIENCE_S)
    phone.wait_until_served()
    wait_until_connected(phone, since)
    assert entries() == before
    phone.bramd.call("launchApp", "s", "org.example.weather")
    wait_for(lambda: launched_packages(phone) == ["org.example.weather"], "the launch", PATIENCE_S)
