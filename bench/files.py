"""What announcements cost that become files, on a file system in memory and on the disk."""

import os
import shutil
from contextlib import contextmanager
from pathlib import Path

from phone import namespace

from rounds import cost, in_turns, instructions

DIRECTORIES = [Path(path) for path in ("/usr/share/applications", "/var/lib/bramd",
                                       "/usr/share/corvo-settings/entries")]
APPS = 500
APPS_ON_DISK = 60
FEW, MANY = 200, 2000
ANNOUNCEMENT = "DesktopManager::onCreateLauncher*"
TARGETS = 200


def measure(table, rounds):
    in_memory(table, rounds)
    scaling(table)
    on_disk(table, rounds)
    sharing(table, rounds)


def in_memory(table, rounds):
    taken = in_turns(rounds, {
        "first": cleaned("ours_launchers", "first", APPS),
        "first floor": cleaned("floor_files", "qsavefile", "first", APPS),
        "first posix": cleaned("floor_files", "posix", "first", APPS),
        "again": cleaned("ours_launchers", "again", APPS),
        "again floor": cleaned("floor_files", "qsavefile", "again", APPS),
        "again posix": cleaned("floor_files", "posix", "again", APPS),
        # The files of the turn before are still there.
        "index": lambda: cost("ours_launchers", "index", APPS),
        "index posix": lambda: cost("floor_files", "posix", "index", APPS)})
    check_files()

    def row(name, of, floor_name, floor, target):
        table.add(name, taken[of]["cpu"], "us", target, floor_name=floor_name,
                  floor=taken[floor]["cpu"])
    row("first announcement, in memory", "first", "QSaveFile", "first floor", 1.4)
    row("first announcement, in memory", "first", "POSIX calls", "first posix", None)
    row("announced again, unchanged", "again", "QFile, read and compare", "again floor", None)
    row("announced again, unchanged", "again", "POSIX, read and compare", "again posix", 2.0)
    row("index, per installed entry", "index", "POSIX, list and read", "index posix", 2)


def scaling(table):
    """In instructions: the icons of so many apps do not fit into a processor's cache, which makes
    reading them slower whoever does it."""
    def each(work, apps):
        clean()
        return instructions(ANNOUNCEMENT, "ours_launchers", work, apps) / apps
    first = {apps: each("first", apps) for apps in (FEW, MANY)}
    both = {apps: each("again", apps) for apps in (FEW, MANY)}
    for name, taken in (("first announcement", first),
                        ("announced again", {apps: both[apps] - first[apps] for apps in both})):
        table.add(f"{name}, each of {MANY}", taken[MANY], "instructions", 1.05,
                  floor_name=f"each of {FEW}", floor=taken[FEW])


def on_disk(table, rounds):
    with directories_on_disk():
        taken = in_turns(rounds, {
            "first": cleaned("ours_launchers", "first", APPS_ON_DISK),
            "floor": cleaned("floor_files", "qsavefile", "first", APPS_ON_DISK)})
    table.add("first announcement, on disk, wall time", taken["first"]["wall"], "us", 1.1,
              floor_name="QSaveFile", floor=taken["floor"]["wall"])


def sharing(table, rounds):
    taken = in_turns(rounds, {
        "grow": cleaned("ours_launchers", "share", TARGETS),
        "rewrite": lambda: cost("floor_files", "qsavefile", "rewrite", TARGETS),
        "again": cleaned("ours_launchers", "share-again", TARGETS),
        "read": lambda: cost("floor_files", "posix", "read", TARGETS)})
    table.add(f"share target beside {TARGETS}, added", taken["grow"]["cpu"], "us", 6,
              floor_name="QSaveFile, one rewrite", floor=taken["rewrite"]["cpu"])
    table.add(f"share target beside {TARGETS}, unchanged", taken["again"]["cpu"], "us", 2.5,
              floor_name="POSIX, one read", floor=taken["read"]["cpu"])


def cleaned(*command):
    """A contestant that begins without any files."""
    def contestant():
        clean()
        return cost(*command)
    return contestant


def clean():
    for directory in DIRECTORIES:
        directory.mkdir(parents=True, exist_ok=True)
        for entry in os.scandir(directory):
            os.unlink(entry.path)


def check_files():
    """The floor has to do the same work: no file may differ."""
    clean()
    cost("floor_files", "posix", "first", 3)
    floor = contents()
    clean()
    cost("ours_launchers", "first", 3)
    ours = {path: content for path, content in contents().items() if path.name != "sharing.json"}
    if ours != floor:
        raise AssertionError("the floor writes other files than the daemon")


def contents():
    return {path: (path.stat().st_mode, path.read_bytes())
            for directory in DIRECTORIES for path in directory.iterdir()}


@contextmanager
def directories_on_disk():
    """For a while the directories are on the file system of the build."""
    place = Path(os.environ["BRAMD_BUILD_DIR"]) / "bench" / "disk"
    shutil.rmtree(place, ignore_errors=True)
    for directory in DIRECTORIES:
        substitute = place / directory.name
        substitute.mkdir(parents=True)
        directory.mkdir(parents=True, exist_ok=True)
        namespace.bind(substitute, directory)
    try:
        yield
    finally:
        for directory in DIRECTORIES:
            namespace.unmount(directory)
        shutil.rmtree(place)
