"""What the shipped unit has to leave open, and what it closes."""

import json
import socket
from pathlib import Path

from phone.runtime import IMAGE

from realphone import DAEMON_UNIT, SESSION_BUS, USER, USER_ID, run, systemctl
from steps import download, install, request, start_runtime, wait_for_entries

# Where the daemon has to write, and where it has nothing to write.
WRITABLE = ("/usr/share/applications", "/usr/share/bramd/partnerspace",
            "/usr/share/corvo-settings/entries", "/var/lib/bramd", "/home/.android")
NOT_WRITABLE = ("/", "/etc", "/etc/bramd", "/home", f"/home/{USER}", "/opt/umbra", "/root", "/run",
                "/run/lock", "/run/systemd/system", "/tmp", "/usr", "/usr/share/corvo-settings",
                "/var/lib", "/var/lib/dpkg", "/var/tmp")

CARD = Path("/run/media") / USER / "card"
PROBE = Path(__file__).with_name("probe.py")
INVOKER = Path("/usr/bin/invoker")
INVOKER_SOCKET = Path("/run/phone/invoker.socket")

# As the real one, it tells another process of the user's what to start.
TELLING_INVOKER = f"""#!/usr/bin/python3
import json, os, socket, sys
report = {{"arguments": sys.argv[1:], "users": os.getresuid(),
          "bus": os.environ.get("DBUS_SESSION_BUS_ADDRESS")}}
with socket.socket(socket.AF_UNIX) as connection:
    connection.connect("{INVOKER_SOCKET}")
    connection.sendall(json.dumps(report).encode())
"""


def test_the_daemon_is_in_the_sandbox(phone):
    status = dict(line.split(":\t", 1) for line
                  in Path(f"/proc/{phone.daemon.pid}/status").read_text("ascii").splitlines())
    assert status["Seccomp"].strip() == "2"
    assert int(status["CapBnd"], 16) == 1 << 0 | 1 << 1 | 1 << 3 | 1 << 6 | 1 << 7
    # /usr/bin/invoker may be set-group-id.
    assert status["NoNewPrivs"].strip() == "0"


def test_the_daemon_writes_only_where_it_must(phone):
    mounts = [line.split() for line
              in Path(f"/proc/{phone.daemon.pid}/mountinfo").read_text("utf-8").splitlines()]

    def is_writable(path):
        """By the mount that it is in; of several at one place the last is seen."""
        found = [fields for fields in mounts if Path(path).is_relative_to(fields[4])]
        deepest = max(len(fields[4]) for fields in found)
        return "rw" in [fields for fields in found if len(fields[4]) == deepest][-1][5].split(",")
    assert [path for path in WRITABLE if not is_writable(path)] == []
    assert [path for path in NOT_WRITABLE if is_writable(path)] == []


def test_another_program_in_the_sandbox_is_kept_there(phone):
    """It tries what the daemon does not."""
    assert phone.daemon.pid
    report = Path("/run/probe.json")
    unit = Path("/run/systemd/system/probe.service")
    shipped = Path(f"/lib/systemd/system/{DAEMON_UNIT}").read_text("utf-8").splitlines()
    replaced = ("Type=", "BusName=", "Exec", "Restart")
    unit.write_text("\n".join([*(line for line in shipped if not line.startswith(replaced)),
                               "[Service]", "Type=oneshot", f"StandardOutput=truncate:{report}",
                               f"ExecStart=/usr/bin/python3 -IS {PROBE}"]), encoding="utf-8")
    try:
        systemctl("start", unit.name)
        assert json.loads(report.read_text("utf-8")) == {
            "a local socket": "done",
            "an internet socket": "EAFNOSUPPORT",
            "a netlink socket": "EAFNOSUPPORT",
            "the runtime's device": "done",
            "another device": "EPERM",
            "a file in /etc": "EROFS",
            "a file in a home": "EROFS",
            "a unit of systemd's": "EROFS",
            "a desktop entry": "done",
            "another time": "EPERM",
            "another root": "EPERM",
        }
    finally:
        unit.unlink()


def test_an_app_is_installed_from_tmp(phone):
    start_runtime(phone)
    install(phone, "weather", Path("/tmp"))
    wait_for_entries(1)


def test_an_app_is_installed_from_a_card_that_was_inserted_later(phone):
    start_runtime(phone)
    CARD.mkdir(parents=True, exist_ok=True)
    run("mount", "-t", "tmpfs", "card", CARD)
    try:
        install(phone, "weather", CARD)
        wait_for_entries(1)
    finally:
        run("umount", CARD)


def test_the_runtime_is_offered_by_a_program_of_the_users(phone):
    with socket.socket(socket.AF_UNIX) as listener:
        INVOKER_SOCKET.unlink(missing_ok=True)
        listener.bind(str(INVOKER_SOCKET))
        INVOKER_SOCKET.chmod(0o666)
        listener.listen()
        listener.settimeout(120)
        INVOKER.write_text(TELLING_INVOKER, encoding="utf-8")
        INVOKER.chmod(0o755)
        (IMAGE / "system.img").unlink()
        try:
            assert not request("installFile", download("weather"))
            connection, _address = listener.accept()
            with connection, connection.makefile("rb") as reader:
                report = json.load(reader)
        finally:
            INVOKER.unlink()
            phone.runtime.install()
    phone.daemon.log.expect("QRT is not installed, offering installation", "warning")
    assert report == {"arguments": ["--type=quartz-qt5", "--no-wait", "/usr/bin/store-client",
                                    "showApp", "umbravm"],
                      "users": [USER_ID] * 3, "bus": SESSION_BUS}
