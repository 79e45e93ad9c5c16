"""The package on a bare Debian system: installed, upgraded, removed and purged."""

import shutil
import subprocess

import pytest

from bareroot import BareRoot
from conftest import SOURCES

PACKAGES = SOURCES / "build/packages"
USERS_POLICY = "etc/dbus-1/system.d/com.corvo.bramd-users.conf"
DATA_ROOT = "srv/android"

# What the daemon writes; and beside it what others do, which has to stay.
OURS = [
    "usr/share/applications/bramd_launcher_a-b.desktop",
    "usr/share/applications/bramd_launcher_a-b.desktop.Xy12Zw",
    "usr/share/applications/bramd_handler_a-c.desktop",
    "usr/share/corvo-settings/entries/bramd_launcher_a-b.json",
    "usr/share/bramd/partnerspace/a.apk",
    "var/lib/bramd/bramd_launcher_a-b.png",
    "var/lib/bramd/sharing.json",
    f"{DATA_ROOT}/data/xrs-staging/app/incoming/a.apk",
    "etc/bramd/app-blacklist",
]
NOT_OURS = [
    "usr/share/applications/editor.desktop",
    "usr/share/corvo-settings/entries/network.json",
    f"{DATA_ROOT}/data/xrs-staging/app/packaged/b.apk",
    f"{DATA_ROOT}/data/data/app-data",
]
MIME_CACHE = "usr/share/applications/mimeinfo.cache"


@pytest.fixture(name="root")
def root_fixture(tmp_path, needs_root):  # pylint: disable=unused-argument
    root = BareRoot(tmp_path, PACKAGES / "bare")
    root.apt_get("update")
    yield root
    shutil.rmtree(tmp_path)


def bring_in(root, version=None):
    """Copies the package into the root, under a later version if one is given."""
    package, = PACKAGES.glob("bramd_*.deb")
    if version is None:
        shutil.copy(package, root.path / "mnt/bramd.deb")
        return "/mnt/bramd.deb"
    unpacked = root.path / "mnt/unpacked"
    subprocess.run(["dpkg-deb", "-R", package, unpacked], check=True)
    control = unpacked / "DEBIAN/control"
    lines = control.read_text(encoding="utf-8").splitlines()
    lines = [f"Version: {version}" if line.startswith("Version:") else line for line in lines]
    control.write_text("\n".join(lines) + "\n", encoding="utf-8")
    subprocess.run(["dpkg-deb", "-b", unpacked, root.path / "mnt/later.deb"], check=True,
                   stdout=subprocess.DEVNULL)
    shutil.rmtree(unpacked)
    return "/mnt/later.deb"


def present(root, names):
    return [name for name in names if (root.path / name).exists()]


def check_that_it_is_installed(root):
    assert root.asked_of_systemd() == ["--no-block start bramd.service"]
    wanted = root.path / "etc/systemd/system/multi-user.target.wants/bramd.service"
    assert wanted.is_symlink(), "it starts with the system"
    assert "privileged:" in (root.path / "etc/group").read_text(encoding="utf-8")
    started = root.run("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                       "/usr/sbin/bramd", check=False)
    assert (started.returncode, started.stderr) == (
        2, "/usr/sbin/bramd: Not running as root, exiting.\n")


def check_that_an_upgrade_leaves_alone_what_it_finds(root):
    (root.path / USERS_POLICY).unlink()
    root.apt_get("install", bring_in(root, "99"))
    assert root.run("dpkg-query", "-W", "-f", "${Version}", "bramd").stdout == "99"
    assert root.asked_of_systemd() == [], "the daemon is neither stopped nor started"
    assert present(root, [USERS_POLICY]) == [], "what was removed stays away"


def write_what_the_daemon_writes(root):
    root.write("etc/default/bramd", f'ANDROID_DATA_ROOT="/{DATA_ROOT}"\n')
    for name in OURS + NOT_OURS:
        root.write(name, "[Desktop Entry]\nType=Application\nName=A\nExec=a\nMimeType=text/plain;\n"
                   if name.endswith(".desktop") else "")
    root.run("update-desktop-database", "-q")
    assert "bramd_handler" in (root.path / MIME_CACHE).read_text(encoding="utf-8")


def test_it_comes_stays_and_goes(root):
    root.apt_get("install", bring_in(root))
    check_that_it_is_installed(root)
    check_that_an_upgrade_leaves_alone_what_it_finds(root)

    write_what_the_daemon_writes(root)
    root.apt_get("remove", "bramd")
    assert root.asked_of_systemd() == ["stop bramd.service"]
    assert present(root, OURS) == OURS, "a removal is no purge"

    root.apt_get("purge", "bramd")
    for package in ("bramd.deb", "later.deb"):
        (root.path / "mnt" / package).unlink()
    assert root.named("bramd") == []
    assert present(root, OURS + [f"{DATA_ROOT}/data/xrs-staging/app/incoming"]) == []
    assert present(root, NOT_OURS) == NOT_OURS
    cache = (root.path / MIME_CACHE).read_text(encoding="utf-8")
    assert "editor.desktop" in cache and "bramd" not in cache


def test_nothing_is_left_of_a_data_root_that_nobody_else_uses(root):
    root.apt_get("install", bring_in(root))
    for directory in ("incoming", "packaged"):
        (root.path / "home/.android/data/xrs-staging/app" / directory).mkdir(parents=True)
    root.apt_get("purge", "bramd")
    assert present(root, ["home/.android", "usr/share/corvo-settings", "usr/share/bramd"]) == []
