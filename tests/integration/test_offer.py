"""Without a runtime the user is offered it by the store's client."""

import json
from pathlib import Path

import pytest

from phone.namespace import USER_ID
from phone.runtime import IMAGE

from conditions import needs_other_users
from daemonsteps import DAEMON
from hostfiles import INCOMING, download

INVOKER = Path("/usr/bin/invoker")
STORE_CLIENT = Path("/usr/bin/store-client")
REPORT = Path("/run/phone/invoker.report")

OFFERING = "QRT is not installed, offering installation"

REPORTING_INVOKER = f"""#!/usr/bin/python3
import json, os, sys
report = {{"arguments": sys.argv[1:], "users": os.getresuid(),
          "bus": os.environ.get("DBUS_SESSION_BUS_ADDRESS")}}
with open("{REPORT}", "w") as file:
    json.dump(report, file)
"""


@pytest.fixture(autouse=True)
def no_image(phone, bramd):
    del bramd
    (IMAGE / "system.img").unlink()
    REPORT.touch()
    REPORT.chmod(0o666)
    yield
    assert not list(INCOMING.iterdir())
    assert not phone.unit.calls("StartUnit")
    for program in (INVOKER, STORE_CLIENT):
        program.unlink(missing_ok=True)


def place(program, text):
    program.write_text(text, encoding="utf-8")
    program.chmod(0o755)


def request(phone):
    assert phone.bramd.call("installFile", "s", str(download("weather"))) is False
    phone.daemon.log.expect(OFFERING, "warning", DAEMON)


@needs_other_users
def test_the_stores_page_of_the_runtime_is_opened_for_the_user(phone):
    place(INVOKER, REPORTING_INVOKER)
    place(STORE_CLIENT, "#!/bin/sh\n")
    request(phone)
    report = json.loads(REPORT.read_text(encoding="utf-8"))
    assert report["arguments"] == ["--type=quartz-qt5", "--no-wait", "/usr/bin/store-client",
                                   "showApp", "umbravm"]
    assert report["users"] == [USER_ID] * 3
    assert report["bus"] == phone.session_bus.address


def test_with_nobody_logged_in_root_makes_the_offer(phone):
    phone.login.logout()
    place(INVOKER, REPORTING_INVOKER)
    request(phone)
    assert json.loads(REPORT.read_text(encoding="utf-8"))["users"] == [0, 0, 0]


@needs_other_users
def test_a_launcher_that_is_killed_is_reported(phone):
    place(INVOKER, "#!/bin/sh\nkill -9 $$\n")
    request(phone)
    assert "Could not install QRT package: umbravm" in phone.daemon.log.other_lines


@needs_other_users
def test_a_launcher_that_fails_is_ignored(phone):
    place(INVOKER, "#!/bin/sh\nexit 3\n")
    request(phone)
    assert not phone.daemon.log.other_lines


def test_the_daemon_serves_on_after_an_offer(phone):
    phone.login.logout()
    place(INVOKER, REPORTING_INVOKER)
    request(phone)
    request(phone)
    assert phone.bramd.call("getAndroidVersionData") == (28, "9", "2021-05-05")
