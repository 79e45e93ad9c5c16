"""What the shipped unit has to leave open, and what it closes."""

import json
import socket
from pathlib import Path

from phone.runtime import IMAGE

from realphone import SESSION_BUS, USER, USER_ID, run
from steps import download, install, request, start_runtime, wait_for_entries

CARD = Path("/run/media") / USER / "card"
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
    assert int(status["CapBnd"], 16) == 1 << 0 | 1 << 1 | 1 << 3 | 1 << 7


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
    assert report == {"arguments": ["--type=quartz-qt5", "--no-wait", "/usr/bin/store-client",
                                    "showApp", "umbravm"],
                      "users": [USER_ID] * 3, "bus": SESSION_BUS}
