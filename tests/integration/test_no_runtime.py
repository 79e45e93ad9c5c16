"""What the tools say on a phone without the runtime, which the store's client offers."""

from pathlib import Path

import pytest

from phone.runtime import IMAGE

import tools
from bramctl import NO_RUNTIME, bramctl
from conditions import needs_other_users
from daemonsteps import DAEMON
from hostfiles import download
from texts import ENGLISH

PROGRAMS = [Path("/usr/bin/invoker"), Path("/usr/bin/store-client")]

pytestmark = needs_other_users  # the store's page is opened as the user


def remove_image(_phone):
    (IMAGE / "system.img").unlink()


def remove_image_and_unit(phone):
    remove_image(phone)
    phone.unit.process.stop()
    phone.unit = None


@pytest.fixture(name="bare", params=[remove_image, remove_image_and_unit])
def bare_fixture(phone, request):
    """A phone without a runtime, which the daemon offers then."""
    phone.start_daemon()
    request.param(phone)
    for program in PROGRAMS:
        program.write_text("#!/bin/sh\n", encoding="utf-8")
        program.chmod(0o755)
    yield phone
    for program in PROGRAMS:
        program.unlink()
    phone.daemon.log.expect("QRT is not installed, offering installation", "warning", DAEMON)


def test_bramctl_has_it_offered(bare):
    del bare
    bramctl("install", download("weather")).failed(NO_RUNTIME, "not installed", "from the store")


def test_opening_an_apk_has_it_offered(bare):
    result = tools.run("bramd-open-apk", download("weather"))
    assert result.returncode == NO_RUNTIME, result
    assert "Install it from the store" in result.stderr
    assert bare.notifications.wait_for_notice(2)["body"] == ENGLISH["bramd-install-no-runtime"]
