"""The Debian packages hold what an installation from the build directory consists of, and what the
document for makers of devices lists."""

import fnmatch
import gzip
import re
import subprocess

import pytest

from conftest import SOURCES

# What Debian adds to every package.
DEBIANS_OWN = ("usr/share/doc/", "usr/share/lintian/")

# Debian builds these with options of its own.
PROGRAMS = ("usr/sbin/bramd", "usr/bin/bramd-launcher", "usr/bin/bramd-open-apk",
            "usr/bin/bramctl")


PACKAGES = list((SOURCES / "build/packages").glob("*.deb"))


@pytest.fixture(scope="module", name="packaged")
def packaged_fixture(tmp_path_factory):
    """The unpacked packages, as on one host."""
    root = tmp_path_factory.mktemp("packaged")
    assert PACKAGES
    for package in PACKAGES:
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


def documented():
    """The files that the document names, by package; directories end in a slash, and some names are
    patterns."""
    text = (SOURCES / "docs/deploying.md").read_text(encoding="utf-8")
    parts = re.split("^Of the package `(.*)`:$", text, flags=re.MULTILINE)[1:]
    return {name: [word for row in re.findall(r"^\| (`.*?) \|", table, re.MULTILINE)
                   for word in re.findall("`(.*?)`", row)]
            for name, table in zip(parts[::2], parts[1::2])}


def content(path):
    return gzip.decompress(path.read_bytes()) if path.suffix == ".gz" else path.read_bytes()


def test_the_packages_hold_the_same_files_as_an_installation(installed, packaged):
    expected = paths(installed)
    assert len(expected) > 10
    assert paths(packaged) == expected


def test_the_daemon_is_small(packaged):
    """As are the phones that it is for."""
    assert (packaged / "usr/sbin/bramd").stat().st_size <= 600 * 1024


def test_the_document_says_of_each_file_what_it_is_for(tmp_path):
    tables = documented()
    assert tables.keys() == {package.name.partition("_")[0] for package in PACKAGES}
    for package in PACKAGES:
        name = package.name.partition("_")[0]
        root = tmp_path / name
        subprocess.run(["dpkg-deb", "-x", package, root], check=True)
        there = [f"/{path.relative_to(root)}" + ("/" if path.is_dir() else "")
                 for path in root.rglob("*") if not path.is_dir() or not any(path.iterdir())]
        there = [path for path in there if not path[1:].startswith(DEBIANS_OWN)]
        assert [path for path in there
                if not any(fnmatch.fnmatch(path, pattern) for pattern in tables[name])] == []
        assert [pattern for pattern in tables[name] if not fnmatch.filter(there, pattern)] == []


def test_the_files_have_the_same_content(installed, packaged):
    for name in paths(installed):
        path = packaged / name
        if path.is_dir() or name in PROGRAMS:
            continue
        if not path.exists():
            path = packaged / f"{name}.gz"
        assert content(path) == (installed / name).read_bytes(), name
