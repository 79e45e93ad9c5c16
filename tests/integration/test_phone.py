"""The simulated phone itself: what the other tests rely on."""

import ctypes
import json
import os
import subprocess
from pathlib import Path

import pytest

from gi.repository import GLib

from phone.daemonlog import DaemonLog
from phone.login import SYSTEMD
from phone.namespace import USER_ID, mount_tmpfs, unmount
from phone.runtime import RECORD
from phone.waiting import Timeout, wait_for

ENTER = Path(__file__).resolve().parents[2] / "sim" / "phone" / "enter"

ANSWERING_PROGRAM = ["/usr/bin/python3", "-c", """
import signal, socket, sys
server = socket.socket(socket.AF_UNIX)
server.bind(sys.argv[1])
server.listen()
signal.pause()
""", "/run/phone/answers"]

pytestmark = pytest.mark.phone(device=False)


class UnitListener:
    """systemd's manager and unit as the daemon uses them."""

    def __init__(self, phone):
        self.manager = phone.system_bus.object(
            "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
            "org.freedesktop.systemd1.Manager")
        self.manager.call("Subscribe")
        path = self.manager.call("LoadUnit", "s", "umbravm.service")
        self._changes = phone.system_bus.object(
            "org.freedesktop.systemd1", path,
            "org.freedesktop.DBus.Properties").collect_signal("PropertiesChanged")

    def states(self):
        return [changed["ActiveState"] for interface, changed, _invalidated in self._changes
                if interface == "org.freedesktop.systemd1.Unit" and "ActiveState" in changed]

    def wait_for(self, *states):
        wait_for(lambda: len(self.states()) >= len(states), f"the states {states}")
        assert self.states() == list(states)


def test_a_command_finds_the_phones_paths_empty():
    for path in ("/usr/share/applications", "/usr/share/bramd", "/etc/bramd"):
        assert not os.listdir(path), path
    for path in ("/var/lib/bramd", "/opt/umbra", "/dev/marshhopper", "/usr/bin/invoker"):
        assert not os.path.exists(path), path


def test_nothing_outside_changes_and_no_process_stays():
    marker = f"left-behind-{os.getpid()}"
    subprocess.run(
        [ENTER, "/bin/sh", "-c",
         f"touch /usr/bin/{marker} /var/lib/{marker} /home/{marker} /etc/{marker} /opt/{marker}"
         f" /usr/share/{marker}; cp /bin/sleep /run/{marker}; /run/{marker} 1000 &"
         f" until grep -q {marker} /proc/$!/cmdline; do :; done"],
        check=True)
    for directory in ("/usr/bin", "/var/lib", "/home", "/etc", "/opt", "/usr/share"):
        assert not os.path.exists(f"{directory}/{marker}")
    commands = [path.read_bytes() for path in Path("/proc").glob("[0-9]*/cmdline")]
    assert not [command for command in commands if marker.encode() in command]


def test_the_exit_status_of_the_command_is_handed_on():
    assert subprocess.run([ENTER, "sh", "-c", "exit 7"], check=False).returncode == 7
    assert subprocess.run([ENTER, "sh", "-c", "kill -9 $$"], check=False).returncode == 137


def test_the_shell_finds_the_daemon_and_the_users_bus():
    questions = """
busctl --system call com.corvo.bramd /com/corvo/bramd com.corvo.bramd getAndroidVersionData
gdbus call --session --dest org.freedesktop.Notifications \\
    --object-path /org/freedesktop/Notifications \\
    --method org.freedesktop.Notifications.GetServerInformation
exit 5
"""
    result = subprocess.run([ENTER.with_name("shell"), "29"], input=questions, text=True,
                            capture_output=True, env={**os.environ, "SHELL": "/bin/sh"},
                            check=False, timeout=60)
    assert '(iss) 29 "10" "2021-05-05"' in result.stdout, result
    assert "simulated phone" in result.stdout, result
    assert result.returncode == 5


def test_a_machine_without_namespaces_is_told_so():
    # In a user namespace of its own, whose limits are nobody else's.
    forbid = "echo 0 > /proc/sys/user/max_mnt_namespaces && exec \"$@\""
    refused = subprocess.run(
        ["unshare", "--user", "--map-root-user", "sh", "-c", forbid, "sh", ENTER, "echo", "entered"],
        check=False, capture_output=True, text=True)
    assert refused.returncode == 1
    assert refused.stdout == ""
    assert refused.stderr.startswith("enter: unshare: unshare failed: ")
    assert "needs private namespaces" in refused.stderr


def test_sd_login_reads_who_is_active(phone):
    library = ctypes.CDLL("libsystemd.so.0")
    uid = ctypes.c_uint()
    assert library.sd_seat_get_active(b"seat0", None, ctypes.byref(uid)) == 0
    assert uid.value == USER_ID
    phone.login.logout()
    assert library.sd_seat_get_active(b"seat0", None, ctypes.byref(uid)) < 0
    monitor = ctypes.c_void_p()
    assert library.sd_login_monitor_new(b"seat", ctypes.byref(monitor)) == 0
    library.sd_login_monitor_unref(monitor)
    phone.login.remove()
    assert not SYSTEMD.joinpath("seats").exists()
    assert library.sd_login_monitor_new(b"seat", ctypes.byref(monitor)) < 0


def test_the_unit_follows_the_program_it_runs(phone):
    listener = UnitListener(phone)
    phone.unit.set_command(ANSWERING_PROGRAM, ANSWERING_PROGRAM[-1])
    phone.unit.start()
    listener.wait_for("activating", "active")
    phone.unit.stop_unit()
    listener.wait_for("activating", "active", "deactivating", "inactive")


def test_the_unit_fails_when_its_program_dies(phone):
    listener = UnitListener(phone)
    phone.unit.set_command(ANSWERING_PROGRAM, ANSWERING_PROGRAM[-1])
    phone.unit.start()
    phone.unit.wait_for_state("active")
    phone.unit.kill_runtime()
    listener.wait_for("activating", "active", "failed")


def test_the_unit_is_held_back_on_demand(phone):
    phone.unit.hold_activation(True)
    phone.unit.set_command(ANSWERING_PROGRAM, ANSWERING_PROGRAM[-1])
    phone.unit.start()
    wait_for(lambda: Path(ANSWERING_PROGRAM[-1]).exists(), "the program")
    assert phone.unit.state() == "activating"
    phone.unit.hold_activation(False)
    phone.unit.wait_for_state("active")


def test_nobody_hears_of_the_unit_without_subscribing(phone):
    changes = phone.system_bus.object(
        "org.freedesktop.systemd1", phone.unit.unit_path,
        "org.freedesktop.DBus.Properties").collect_signal("PropertiesChanged")
    phone.unit.show("failed", "failed")
    assert phone.unit.state() == "failed"
    assert not changes


def test_the_unit_can_be_unknown(phone):
    phone.unit.refuse_load(True)
    with pytest.raises(GLib.Error, match="Access denied"):
        UnitListener(phone)


@pytest.mark.phone(device=False, services=["accounts"])
def test_the_accounts_service_answers_like_the_real_one(phone):
    user = phone.system_bus.object(
        "org.freedesktop.Accounts", f"/org/freedesktop/Accounts/User{USER_ID}",
        "org.freedesktop.DBus.Properties")
    question = ("Get", "ss", "com.endlessm.ParentalControls.AppFilter", "AllowUserInstallation")
    with pytest.raises(GLib.Error, match="No such interface"):
        user.call(*question)
    phone.accounts.allow_installation(False)
    assert user.call(*question) is False
    phone.accounts.allow_installation(True)
    assert user.call(*question) is True
    phone.accounts.set_mode("fail")
    with pytest.raises(GLib.Error, match="not readable"):
        user.call(*question)
    phone.accounts.set_mode("hang")
    with pytest.raises(GLib.Error, match="Timeout"):
        user.call(*question, timeout_ms=100)


def test_a_notice_is_kept(phone):
    service = phone.session_bus.object(
        "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications")
    assert service.call("Notify", "susssasa{sv}i", "app", 0, "icon", "summary", "body", [],
                        {"transient": GLib.Variant("b", True)}, -1) == 1
    notice = phone.notifications.wait_for_notice()
    assert notice["summary"] == "summary"
    assert notice["hints"] == {"transient": True}


def test_a_small_disk_can_be_put_anywhere(tmp_path):
    mount_tmpfs(tmp_path, "size=64k")
    with pytest.raises(OSError):
        (tmp_path / "big").write_bytes(bytes(100000))
    unmount(tmp_path)
    (tmp_path / "big").write_bytes(bytes(100000))


def test_the_log_reader_tells_records_from_other_lines(tmp_path):
    path = tmp_path / "log"
    path.write_text('<debug> default: fine\n<warning> com.corvo.bramd.daemon: odd "x"\n'
                    "bramd: Not running as root, exiting.\n<critical> default: half a li",
                    encoding="utf-8")
    log = DaemonLog(path)
    assert log.texts() == ["fine", 'odd "x"']
    assert log.other_lines == ["bramd: Not running as root, exiting."]
    assert log.unclaimed_trouble() == ['<warning> com.corvo.bramd.daemon: odd "x"']
    log.expect('odd "x"', "warning", "com.corvo.bramd.daemon")
    assert not log.unclaimed_trouble()
    with pytest.raises(Timeout):
        log.expect('odd "x"', timeout=0)
    with path.open("a", encoding="utf-8") as file:
        file.write("ne\n==1==ERROR: AddressSanitizer: heap-use-after-free\n")
    assert log.unclaimed_trouble() == ["<critical> default: half a line",
                                       "==1==ERROR: AddressSanitizer: heap-use-after-free"]


def test_the_runtimes_record_is_read_line_by_line(phone):
    record = {"service": "package", "interface": "i", "code": 5, "oneway": False, "data": "00"}
    RECORD.write_text(json.dumps(record) + "\n" + json.dumps({**record, "code": 6}) + "\n{\"ser",
                      encoding="utf-8")
    assert [found["code"] for found in phone.runtime.transactions()] == [5, 6]
    assert phone.runtime.wait_for_transaction("package", 6)["data"] == "00"
    phone.runtime.forget()
    assert not phone.runtime.transactions()
