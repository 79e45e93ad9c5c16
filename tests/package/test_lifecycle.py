"""The packages on a bare Debian system: installed, upgraded, removed and purged."""

import re
import shutil
import subprocess

import pytest

from bareroot import BareRoot
from conftest import SOURCES

PACKAGES = SOURCES / "build/packages"
NAMES = ("bramd", "bramd-tools")
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
START, STOP = ["--no-block start bramd.service"], ["stop bramd.service"]
MIME_CACHE = "usr/share/applications/mimeinfo.cache"


@pytest.fixture(name="root")
def root_fixture(tmp_path, needs_root):  # pylint: disable=unused-argument
    root = BareRoot(tmp_path, PACKAGES / "bare")
    root.apt_get("update")
    yield root
    shutil.rmtree(tmp_path)


def bring_in(root, version=None):
    """Copies the packages into the root, under a later version if one is given; returns their paths
    there."""
    found = []
    for name in NAMES:
        package, = PACKAGES.glob(f"{name}_*.deb")
        target = root.path / f"mnt/{name}{version or ''}.deb"
        if version is None:
            shutil.copy(package, target)
        else:
            make_later(package, target, version)
        found.append(f"/mnt/{target.name}")
    return found


def make_later(package, target, version):
    unpacked = target.with_suffix(".unpacked")
    subprocess.run(["dpkg-deb", "-R", package, unpacked], check=True)
    control = unpacked / "DEBIAN/control"
    text = control.read_text(encoding="utf-8")
    own = re.search("^Version: (.*)$", text, re.MULTILINE)[1]
    text = text.replace(f"Version: {own}\n", f"Version: {version}\n")
    text = text.replace(f"bramd (= {own})", f"bramd (= {version})")
    control.write_text(text, encoding="utf-8")
    subprocess.run(["dpkg-deb", "-b", unpacked, target], check=True, stdout=subprocess.DEVNULL)
    shutil.rmtree(unpacked)


def present(root, names):
    return [name for name in names if (root.path / name).exists()]


def check_that_it_is_installed(root):
    assert root.asked_of_systemd() == START
    wanted = root.path / "etc/systemd/system/multi-user.target.wants/bramd.service"
    assert wanted.is_symlink(), "it starts with the system"
    assert "privileged:" in (root.path / "etc/group").read_text(encoding="utf-8")
    started = root.run("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                       "/usr/sbin/bramd", check=False)
    assert (started.returncode, started.stderr) == (
        2, "/usr/sbin/bramd: Not running as root, exiting.\n")


def check_that_an_upgrade_leaves_alone_what_it_finds(root):
    (root.path / USERS_POLICY).unlink()
    root.apt_get("install", *bring_in(root, "99"))
    assert root.run("dpkg-query", "-W", "-f", "${Version}", "bramd").stdout == "99"
    assert root.asked_of_systemd() == [], "the daemon is neither stopped nor started"
    assert present(root, [USERS_POLICY]) == [], "what was removed stays away"


def check_that_it_is_started_again_when_its_removal_fails(root):
    script = root.path / "var/lib/dpkg/info/bramd.prerm"
    text = script.read_text(encoding="utf-8")
    script.write_text(f"{text}exit 1\n", encoding="utf-8")
    assert root.run("dpkg", "--remove", *NAMES, check=False).returncode != 0
    assert root.asked_of_systemd() == STOP + START
    script.write_text(text, encoding="utf-8")
    root.apt_get("install", *bring_in(root))  # bramd-tools is gone


def write_what_the_daemon_writes(root):
    root.write("etc/default/bramd", f'  ANDROID_DATA_ROOT="/{DATA_ROOT}" \n')
    for name in OURS + NOT_OURS:
        root.write(name, "[Desktop Entry]\nType=Application\nName=A\nExec=a\nMimeType=text/plain;\n"
                   if name.endswith(".desktop") else "")
    root.run("update-desktop-database", "-q")
    assert "bramd_handler" in (root.path / MIME_CACHE).read_text(encoding="utf-8")


def test_it_comes_stays_and_goes(root):
    root.apt_get("install", *bring_in(root))
    check_that_it_is_installed(root)
    check_that_it_is_started_again_when_its_removal_fails(root)
    check_that_an_upgrade_leaves_alone_what_it_finds(root)

    write_what_the_daemon_writes(root)
    root.apt_get("remove", *NAMES)
    assert root.asked_of_systemd() == STOP
    assert present(root, OURS) == OURS, "a removal is no purge"
    root.apt_get("install", *bring_in(root, "99"))
    assert root.asked_of_systemd() == START, "it starts as at the first installation"

    root.apt_get("purge", *NAMES)
    for package in (root.path / "mnt").glob("*.deb"):
        package.unlink()
    assert root.named("bramd") == []
    assert present(root, OURS + [f"{DATA_ROOT}/data/xrs-staging/app/incoming"]) == []
    assert present(root, NOT_OURS) == NOT_OURS
    cache = (root.path / MIME_CACHE).read_text(encoding="utf-8")
    assert "editor.desktop" in cache and "bramd" not in cache


def test_a_purge_follows_no_link_of_the_container(root):
    """The data root is written by root of the container."""
    root.write("srv/other/incoming/theirs", "")
    link = root.path / "home/.android/data/xrs-staging/app"
    link.parent.mkdir(parents=True)
    link.symlink_to("/srv/other")
    shutil.copy(SOURCES / "debian/bramd.postrm", root.path / "mnt/postrm")
    purged = root.run("sh", "/mnt/postrm", "purge")
    assert "/home/.android/data/xrs-staging/app is a link" in purged.stderr
    assert present(root, ["srv/other/incoming/theirs"])


def test_where_the_administrator_forbids_it_nothing_is_started(root):
    """Nor is anything left, in the end, of a data root that nobody else uses."""
    root.write("usr/sbin/policy-rc.d", '#!/bin/sh\necho "$*" >>/run/policy\nexit 101\n')
    (root.path / "usr/sbin/policy-rc.d").chmod(0o755)
    root.apt_get("install", *bring_in(root))
    assert root.asked_of_systemd() == []
    assert "bramd.service start\n" in (root.path / "run/policy").read_text(encoding="utf-8")

    for directory in ("incoming", "packaged"):
        (root.path / "home/.android/data/xrs-staging/app" / directory).mkdir(parents=True)
    root.apt_get("purge", *NAMES)
    assert present(root, ["home/.android", "usr/share/corvo-settings", "usr/share/bramd"]) == []
