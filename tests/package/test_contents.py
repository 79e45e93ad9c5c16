"""The Debian package holds what an installation from the build directory consists of."""

import gzip
import subprocess

import pytest

from conftest import SOURCES

# What Debian adds to every package.
DEBIANS_OWN = ("usr/share/doc/", "usr/share/lintian/")

# Debian builds these with options of its own.
PROGRAMS = ("usr/sbin/bramd", "usr/bin/bramd-launcher", "usr/bin/bramd-open-apk",
            "usr/bin/bramctl")


@pytest.fixture(scope="module", name="packaged")
def packaged_fixture(tmp_path_factory):
    """The unpacked packages."""
    root = tmp_path_factory.mktemp("packaged")
    packages = list((SOURCES / "build/packages").glob("*.deb"))
    assert packages
    for package in packages:
        subprocess.run(["dpkg-deb", "-x", package, root], check=True)
    return root


def paths(root):
    """Every file and empty directory with its mode; manual pages without the compression."""
    found = {}
    for path in root.rglob("*"):
        name = str(path.relative_to(root))
        if name.startswith(DEBIANS_OWN) or (path.is_dir() and any(path.iterdir())):
            continue
        found[name.removesuffix(".gz")] = oct(path.stat().st_mode)
    return found


def content(path):
    return gzip.decompress(path.read_bytes()) if path.suffix == ".gz" else path.read_bytes()


def test_the_packages_hold_the_same_files_as_an_installation(installed, packaged):
    expected = paths(installed)
    assert len(expected) > 10
    assert paths(packaged) == expected


def test_the_files_have_the_same_content(installed, packaged):
    for name in paths(installed):
        path = packaged / name
        if path.is_dir() or name in PROGRAMS:
            continue
        if not path.exists():
            path = packaged / f"{name}.gz"
        assert content(path) == (installed / name).read_bytes(), name
