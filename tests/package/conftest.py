"""What the tests of installed files have in common."""

import os
import subprocess
from pathlib import Path

import pytest

SOURCES = Path(__file__).resolve().parents[2]


@pytest.fixture(scope="session", name="installed")
def installed_fixture(tmp_path_factory):
    """A directory into which the build has been installed as into the root of a host."""
    root = tmp_path_factory.mktemp("installed")
    subprocess.run(["cmake", "--install", os.environ["BRAMD_BUILD_DIR"]], check=True,
                   stdout=subprocess.DEVNULL, env={**os.environ, "DESTDIR": str(root)})
    root.chmod(0o755)
    for parent in (root.parent, root.parent.parent):
        parent.chmod(0o755)  # other users' processes read the files, too
    return root


@pytest.fixture(name="needs_root")
def needs_root_fixture():
    """For tests in which a second user takes part."""
    if os.getuid() != 0 or not _maps_other_users():
        pytest.skip("only root can run processes of other users")


def _maps_other_users():
    """In the user namespace of an ordinary user root is the only user there is."""
    ranges = Path("/proc/self/uid_map").read_text(encoding="ascii").split("\n")
    return any(int(line.split()[2]) > 1 for line in ranges if line)
