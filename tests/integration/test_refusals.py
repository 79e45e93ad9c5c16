"""Requests that fail before they reach the runtime: one line each, false, and nothing left."""

import os
import re
import socket

import pytest

from phone.namespace import make_read_only, mount_tmpfs, unmount

from daemonsteps import DAEMON, start_beside_runtime
from hostfiles import DOWNLOADS, INCOMING, download
from packagerequests import installs


@pytest.fixture(name="no_request", autouse=True)
def no_request_fixture(phone):
    """None of the requests here reaches the runtime or starts it."""
    yield
    assert not installs(phone.runtime)
    assert not phone.unit.calls("StartUnit")


def install(phone, path):
    return phone.bramd.call("installFile", "s", str(path))


def expect_copy_failure(phone, source):
    temporary = INCOMING / (os.path.basename(str(source)) + ".tmp")
    phone.daemon.log.expect(f'Could not copy incoming file: "{source}" -> "{temporary}"',
                            "critical", DAEMON)
    assert list(INCOMING.iterdir()) == []


@pytest.mark.parametrize("name", ["foo.apk", "./foo.apk", "../foo.apk", "file:///foo.apk", ""])
def test_a_relative_path_is_refused(phone, bramd, name):
    assert bramd.call("installFile", "s", name) is False
    phone.daemon.log.expect(f'Absolute path required: "{name}"', "critical", DAEMON)
    assert not list(INCOMING.iterdir())


def test_a_missing_file_is_refused(phone, bramd):
    path = DOWNLOADS / "missing.apk"
    assert bramd.call("installFile", "s", str(path)) is False
    phone.daemon.log.expect(f'File does not exist: "{path}"', "critical", DAEMON)


def test_a_name_that_needs_quoting_is_logged_whole(phone, bramd):
    path = DOWNLOADS / 'quo"te ü\n.apk'
    assert bramd.call("installFile", "s", str(path)) is False
    phone.daemon.log.expect(re.compile(r'File does not exist: ".*quo\\"te ü\\n\.apk"'), "critical",
                            DAEMON)


class TestWithARunningRuntime:
    """The runtime runs, so that none of these starts it."""

    @pytest.fixture(autouse=True)
    def running(self, phone):
        start_beside_runtime(phone)

    def test_a_fifo_is_refused_without_blocking(self, phone):
        path = DOWNLOADS / "fifo.apk"
        os.mkfifo(path)
        assert install(phone, path) is False
        expect_copy_failure(phone, path)

    def test_a_device_is_refused(self, phone):
        path = DOWNLOADS / "device.apk"
        path.symlink_to("/dev/zero")
        assert install(phone, path) is False
        expect_copy_failure(phone, path)

    def test_a_socket_is_refused(self, phone):
        path = DOWNLOADS / "socket.apk"
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(str(path))
            assert install(phone, path) is False
        expect_copy_failure(phone, path)

    def test_a_directory_is_refused(self, phone):
        path = DOWNLOADS / "directory.apk"
        path.mkdir()
        assert install(phone, path) is False
        expect_copy_failure(phone, path)

    @pytest.mark.parametrize("path", ["/", "/home/", "/home/.", "/home/.."])
    def test_a_path_without_a_file_name_is_refused(self, phone, path):
        assert install(phone, path) is False
        phone.daemon.log.expect(re.compile(r'Could not copy incoming file: ".*" -> ".*"'),
                                "critical", DAEMON)
        assert list(INCOMING.iterdir()) == []

    def test_a_full_disk_is_reported_and_cleaned_up(self, phone):
        apk = download("papertrail")
        mount_tmpfs(INCOMING, "size=8k", "mode=755")
        try:
            assert install(phone, apk) is False
            expect_copy_failure(phone, apk)
        finally:
            unmount(INCOMING)

    def test_a_read_only_disk_is_reported(self, phone):
        apk = download("papertrail")
        make_read_only(INCOMING)
        try:
            assert install(phone, apk) is False
            expect_copy_failure(phone, apk)
        finally:
            unmount(INCOMING)
        claim_unchangeable_directory(phone)

    def test_a_missing_staging_directory_is_made_again(self, phone):
        INCOMING.rmdir()
        assert install(phone, DOWNLOADS / "missing.apk") is False
        phone.daemon.log.expect(re.compile(r"File does not exist: .*"), "critical")
        assert not INCOMING.exists()
        assert install(phone, make_fifo("late.apk")) is False
        expect_copy_failure(phone, DOWNLOADS / "late.apk")
        assert INCOMING.is_dir()

    def test_a_staging_directory_that_cannot_be_made_is_reported(self, phone):
        INCOMING.rmdir()
        INCOMING.write_bytes(b"a file in its place")
        apk = download("papertrail")
        try:
            assert install(phone, apk) is False
        finally:
            INCOMING.unlink()
        log = phone.daemon.log
        log.expect(re.compile(rf'Cannot create incoming apk directory: "{INCOMING}/"'), "warning",
                   DAEMON)
        claim_unchangeable_directory(phone)
        log.expect(re.compile(r"Could not copy incoming file: .*"), "critical", DAEMON)


def make_fifo(name):
    os.mkfifo(DOWNLOADS / name)
    return DOWNLOADS / name


def claim_unchangeable_directory(phone):
    """Owner and mode are set on every use; on a read-only file system that may fail."""
    for what in ("ownership", "permission"):
        phone.daemon.log.claim_all(f'Cannot set {what} of directory: "{INCOMING}/"', "warning",
                                   DAEMON)
