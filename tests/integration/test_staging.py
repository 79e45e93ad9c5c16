"""The staging directory, which the runtime reaches into, and odd files on their way there."""

import pytest

from phone.runtime import DATA_ROOT

from daemonsteps import DAEMON, start_beside_runtime
from hostfiles import DOWNLOADS, INCOMING, download, owner_and_mode
from packagerequests import install_paths, installs


class TestRuntimeThatPlantsLinks:
    """The container's root can put anything below the data root."""

    @pytest.fixture(name="victim")
    def victim_fixture(self, tmp_path):
        """A directory of the host's that looks like the runtime's."""
        (tmp_path / "app/incoming").mkdir(parents=True)
        (tmp_path / "app/incoming/weather.apk").write_bytes(b"precious")
        tmp_path.chmod(0o700)
        before = self.listing(tmp_path)
        yield tmp_path
        assert self.listing(tmp_path) == before

    @staticmethod
    def listing(directory):
        return sorted((str(path), owner_and_mode(path), path.is_file() and path.read_bytes())
                      for path in [directory, *directory.rglob("*")])

    def claim_unusable_directory(self, phone):
        for problem in ("Cannot create incoming apk directory", "Cannot set ownership of directory",
                        "Cannot set permission of directory"):
            phone.daemon.log.expect(f'{problem}: "{INCOMING}/"', "warning", DAEMON)

    def test_a_link_that_is_there_when_the_daemon_starts_leads_nowhere(self, phone, victim):
        staging = DATA_ROOT / "data/xrs-staging"
        staging.parent.mkdir(parents=True)
        staging.symlink_to(victim)

        start_beside_runtime(phone)

        self.claim_unusable_directory(phone)

    def test_a_link_that_comes_later_leads_nowhere(self, phone, victim):
        start_beside_runtime(phone)
        INCOMING.rmdir()
        INCOMING.symlink_to(victim / "app/incoming")
        apk = download("weather")

        assert phone.bramd.call("installFile", "s", str(apk)) is False

        self.claim_unusable_directory(phone)
        phone.daemon.log.expect(
            f'Could not copy incoming file: "{apk}" -> "{INCOMING}/weather.apk.tmp"', "critical",
            DAEMON)
        assert not installs(phone.runtime)


class TestFiles:
    """What a file is like is up to who calls."""

    @pytest.mark.parametrize("name", ["a\nb.apk", "x" * 247 + ".apk", "-rf", "%s%n", "...", " "])
    def test_odd_names_are_staged_as_they_are(self, phone, name):
        start_beside_runtime(phone)
        apk = download("weather", name)
        assert phone.bramd.call("installFile", "s", str(apk)) is True
        assert [path.name for path in INCOMING.iterdir()] == [name]
        assert install_paths(phone.runtime) == [f"/data/xrs-staging/app/incoming/{name}"]
        assert phone.notifications.wait_for_notice()

    @pytest.mark.parametrize("name", ["x" * 252, "x" * 255, "weather.apk.tmp"])
    def test_names_that_cannot_be_staged_harm_no_other(self, phone, name):
        start_beside_runtime(phone)
        assert phone.bramd.call("installFile", "s", str(download("weather"))) is True
        before = (INCOMING / "weather.apk").stat()
        apk = download("weather", name)
        assert phone.bramd.call("installFile", "s", str(apk)) is False
        phone.daemon.log.expect(
            f'Could not copy incoming file: "{apk}" -> "{INCOMING}/{name}.tmp"', "critical", DAEMON)
        assert (INCOMING / "weather.apk").stat() == before
        assert len(list(INCOMING.iterdir())) == 1

    def test_a_file_of_a_terabyte_is_refused_at_once(self, phone):
        start_beside_runtime(phone)
        apk = DOWNLOADS / "sparse.apk"
        with open(apk, "wb") as file:
            file.truncate(1 << 40)
        assert phone.bramd.call("installFile", "s", str(apk), timeout_ms=5000) is False
        phone.daemon.log.expect(
            f'Could not copy incoming file: "{apk}" -> "{INCOMING}/{apk.name}.tmp"', "critical", DAEMON)
        assert not list(INCOMING.iterdir())
