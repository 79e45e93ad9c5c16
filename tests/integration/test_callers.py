"""Callers that would have the daemon do with root's rights what they could not do themselves."""

import os
import re
import shutil
from pathlib import Path

import pytest

from phone.namespace import PRIVILEGED_GROUP_ID, USER_ID
from phone.process import Process
from phone.waiting import wait_for

from conditions import needs_other_users
from daemonsteps import DAEMON, start_beside_runtime, wait_until_connected
from hostfiles import APKS, DOWNLOADS, INCOMING, download, entries, owner_and_mode
from packagerequests import install_paths, installs

DISK_GROUP_ID = 6
FURTHER_GROUP_ID = 100777
ROOTS_OWN = Path("/home/roots-own")
UNIT = Path(__file__).parents[2] / "data/systemd/bramd.service.in"

pytestmark = pytest.mark.phone(services=["notifications", "accounts"])


@pytest.fixture(name="running")
def running_fixture(phone):
    start_beside_runtime(phone)
    phone.accounts.allow_installation(True)


@pytest.fixture(name="closed")
def closed_fixture():
    """A file that everybody may read, in a directory that only root may enter."""
    ROOTS_OWN.mkdir(mode=0o700)
    shutil.copyfile(APKS / "weather.apk", ROOTS_OWN / "weather.apk")
    (ROOTS_OWN / "weather.apk").chmod(0o644)
    yield ROOTS_OWN / "weather.apk"
    shutil.rmtree(ROOTS_OWN)


def expect_copy_failure(phone, source):
    temporary = INCOMING / (Path(source).name + ".tmp")
    phone.daemon.log.expect(f'Could not copy incoming file: "{source}" -> "{temporary}"',
                            "critical", DAEMON)
    assert not list(INCOMING.iterdir())
    assert not installs(phone.runtime)


def give(path, owner, group, mode):
    os.chown(path, owner, group)
    path.chmod(mode)
    return path


def caller(phone, method, argument, *command, uid=USER_ID, gid=USER_ID):
    """A process that calls, does not wait, and ends or becomes the command."""
    program = Path(__file__).with_name("leavingcaller.py").read_text("utf-8")
    return Process("caller", [
        "/usr/bin/setpriv", "--reuid", str(uid), "--regid", str(gid), "--clear-groups",
        "/usr/bin/python3", "-c", program, phone.system_bus.address, method, str(argument),
        *map(str, command)])


@needs_other_users
@pytest.mark.usefixtures("running")
class TestWhoPassesByThePolicyOnly:
    """Files are read for it with its own rights."""

    @pytest.mark.parametrize("owner, group, mode, groups", [
        pytest.param(USER_ID, 0, 0o400, [], id="own"),
        pytest.param(0, USER_ID, 0o640, [], id="of its group"),
        pytest.param(0, FURTHER_GROUP_ID, 0o640, [FURTHER_GROUP_ID], id="of a further group"),
        pytest.param(0, 0, 0o604, [], id="of everybody"),
    ])
    def test_what_it_may_read_is_installed(self, phone, owner, group, mode, groups):
        apk = give(download("weather"), owner, group, mode)
        assert phone.call_as("installFile", apk, groups=groups) is True
        assert (INCOMING / apk.name).read_bytes() == apk.read_bytes()
        assert owner_and_mode(INCOMING / apk.name) == (0, 0, 0o644)
        wait_for(entries, "the desktop entry")

    @pytest.mark.parametrize("method", ["installFile", "installPreloadFile",
                                        "installPartnerSpaceFile"])
    def test_roots_file_is_not_read(self, phone, method):
        apk = give(download("weather"), 0, 0, 0o600)
        assert phone.call_as(method, apk) is False
        expect_copy_failure(phone, apk)

    def test_a_file_of_a_group_it_is_not_in_is_not_read(self, phone):
        apk = give(download("weather"), 0, FURTHER_GROUP_ID, 0o640)
        assert phone.call_as("installFile", apk) is False
        expect_copy_failure(phone, apk)

    def test_a_file_in_roots_directory_is_not_read(self, phone, closed):
        assert phone.call_as("installFile", closed) is False
        expect_copy_failure(phone, closed)

    def test_its_own_link_opens_nothing(self, phone, closed):
        link = DOWNLOADS / "link.apk"
        link.symlink_to(closed)
        os.lchown(link, USER_ID, USER_ID)
        assert phone.call_as("installFile", link) is False
        expect_copy_failure(phone, link)

    @pytest.mark.parametrize("path", ["/proc/self/environ", "/proc/self/maps", "/dev/fd/0",
                                      "/dev/stdin"])
    def test_the_daemons_own_files_are_not_read(self, phone, path):
        assert phone.call_as("installFile", path) is False
        expect_copy_failure(phone, path)

    def test_what_another_process_has_open_is_not_read(self, phone, closed):
        with open(closed, "rb") as file:
            path = f"/proc/{os.getpid()}/fd/{file.fileno()}"
            assert phone.call_as("installFile", path) is False
        expect_copy_failure(phone, path)

    @pytest.mark.parametrize("identity", [
        pytest.param({"uid": 0, "gid": 0}, id="root"),
        pytest.param({"gid": PRIVILEGED_GROUP_ID}, id="group privileged"),
    ])
    def test_for_others_everything_is_read_also_afterwards(self, phone, closed, identity):
        assert phone.call_as("installFile", closed) is False
        expect_copy_failure(phone, closed)
        assert phone.call_as("installFile", closed, **identity) is True

    def test_the_capabilities_of_the_unit_are_enough(self, phone):
        phone.stop_daemon()
        line = re.search("^CapabilityBoundingSet=(.*)$", UNIT.read_text("utf-8"), re.MULTILINE)
        kept = [f"+{name.removeprefix('CAP_').lower()}" for name in line.group(1).split()]
        phone.start_daemon(prefix=["/usr/bin/setpriv", "--bounding-set", ",".join(["-all", *kept])])
        wait_until_connected(phone)
        apk = give(download("weather"), USER_ID, FURTHER_GROUP_ID, 0o040)
        assert phone.call_as("installFile", apk) is False  # The group may read it, the owner not.
        expect_copy_failure(phone, apk)
        give(apk, 0, FURTHER_GROUP_ID, 0o040)
        assert phone.call_as("installFile", apk, groups=[FURTHER_GROUP_ID]) is True
        wait_for(entries, "the desktop entry")


@needs_other_users
@pytest.mark.usefixtures("running")
class TestWhoIsNotTheCallerAnyMore:
    """The daemon is paused until the caller has become another, or is gone."""

    @pytest.fixture(autouse=True)
    def paused(self, phone, running):
        phone.daemon.process.pause()

    @pytest.mark.parametrize("group, mode, identity", [
        pytest.param(0, 0o4755, (0, USER_ID), id="root"),
        pytest.param(DISK_GROUP_ID, 0o2755, (USER_ID, DISK_GROUP_ID), id="group disk"),
    ])
    def test_a_program_with_rights_of_its_own_does_not_lend_them(self, phone, group, mode, identity):
        phone.accounts.allow_installation(False)
        program = DOWNLOADS / "sleep"
        shutil.copyfile("/usr/bin/sleep", program)
        give(program, 0, group, mode)
        process = caller(phone, "installFile", download("weather"), program, "1000")
        directory = Path(f"/proc/{process.pid}")
        wait_for(lambda: owner_and_mode(directory)[:2] == identity
                 and (directory / "comm").read_text("utf-8") == "sleep\n", "the other program")

        phone.daemon.process.go_on()

        phone.daemon.log.expect("APK installation prohibited", "critical", DAEMON)
        process.stop()
        assert not installs(phone.runtime)

    def test_who_is_gone_gets_what_everybody_may_read(self, phone):
        self.call_and_go(phone, give(download("weather"), USER_ID, USER_ID, 0o644), uid=0)
        phone.daemon.log.expect(re.compile("Asking QRT to install: .*"))
        wait_for(entries, "the desktop entry")
        assert len(install_paths(phone.runtime)) == 1

    def test_who_is_gone_gets_nothing_else(self, phone):
        apk = give(download("weather"), USER_ID, USER_ID, 0o600)
        self.call_and_go(phone, apk)
        expect_copy_failure(phone, apk)

    def test_who_is_gone_is_subject_to_the_policy(self, phone):
        phone.accounts.allow_installation(False)
        self.call_and_go(phone, download("weather"), uid=0)
        phone.daemon.log.expect("APK installation prohibited", "critical", DAEMON)

    @staticmethod
    def call_and_go(phone, apk, uid=USER_ID):
        process = caller(phone, "installFile", apk, uid=uid)
        assert process.wait_for_end() == 0
        name = process.output.strip()
        wait_for(lambda: not phone.system_bus.has_owner(name), f"the end of {name}")
        phone.daemon.process.go_on()
