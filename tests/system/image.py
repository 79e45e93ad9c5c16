"""The disk of the virtual machine: Debian, the packages of this tree, and what tests them.

Two layers, each made anew only when what it is made of has changed: Debian's packages, which take
minutes, and ours on top, which take seconds. Both are kept below build/system."""

import hashlib
import os
import shutil
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
CACHE = SOURCE / "build" / "system"
HERE = Path(__file__).resolve().parent

SUITE = "bookworm"
PACKAGES = (
    # What a host of this kind has, whatever runs on it.
    "systemd", "systemd-sysv", "udev", "kmod", "login", "passwd", "dbus", "dbus-user-session",
    "libpam-systemd", "tzdata", "linux-image-amd64",
    # What the daemon talks to.
    "packagekit", "polkitd", "accountsservice", "malcontent", "desktop-file-utils",
    # What our packages depend on.
    "libqt5core5a", "libqt5dbus5", "libpackagekitqt5-1", "libsystemd0",
    # The simulated runtime and the tests.
    "aapt", "unzip", "libqt5network5", "libqt5test5",
    "python3", "python3-pytest", "python3-dbus", "python3-gi", "python3-dbusmock",
    "python3-pil", "fonts-dejavu-core",
)
# Nobody reads these in the machine, which has no such hardware either.
LEFT_OUT = (
    "/usr/share/doc/*", "/usr/share/man/*", "/usr/share/locale/*", "/usr/share/info/*",
    "/lib/udev/hwdb.d/*", "/usr/lib/udev/hwdb.d/*", "/lib/modules/*/kernel/sound/*",
    *(f"/lib/modules/*/kernel/drivers/{kind}/*" for kind in (
        "gpu", "hid", "hwmon", "iio", "infiniband", "md", "media", "net", "platform", "scsi",
        "staging", "usb")),
)
# The initial file system has what finds the disk, and is small: it is unpacked by an emulated
# processor.
INITRAMFS = {
    "/etc/initramfs-tools/conf.d/machine": "MODULES=list\nCOMPRESS=lz4\n",
    "/usr/share/initramfs-tools/modules.d/machine": "virtio_pci\nvirtio_blk\next4\n",
}


@dataclass(frozen=True)
class Contents:
    """What of this tree a disk has beside the packages."""

    kind: str  # how the disk is called; of each kind the newest is kept
    target: str  # the CMake target that makes what is taken of a build
    programs: tuple  # of the build
    data: tuple  # of the build, as patterns
    sources: tuple


TESTS = Contents(
    "disk", "bramd_machine",
    ("sim/bramd-sim-runtime-kernel", "tests/sim/tst_driver_kernel", "tests/sim/tst_library_kernel",
     "tests/sim/library_peer_kernel"),
    ("sim/apks/*.apk",),
    ("sim/phone", "sim/demo", "sim/drawing.py", "tests/integration", "tests/system/inside",
     "data/translations"))
BENCH = Contents(
    "bench", "bramd_bench_machine",
    ("sim/bramd-sim-runtime-kernel", "bench/floor_binderserver_kernel",
     "bench/caller_binder_kernel", "bench/ours_binderclient_kernel", "bench/floor_qtservice"),
    (),
    ("sim/phone", "tests/integration", "tests/system/inside", "bench"))


class Unable(Exception):
    """The image cannot be made on this machine."""


class Image:
    """The newest disk, with kernel and initial file system beside it. One process at a time makes
    it."""

    def __init__(self, build_directory, contents, say):
        """build_directory has what the contents take of it; say() tells a person what takes
        time."""
        self._build = Path(build_directory)
        self._contents = contents
        self._say = say
        self._data = {pattern: sorted(self._build.glob(pattern)) for pattern in contents.data}
        if not all(self._data.values()) or \
                not all((self._build / name).is_file() for name in contents.programs):
            preset = self._build.name
            raise Unable(f"{self._build} is no complete build: cmake --preset {preset} && "
                         f"cmake --build --preset {preset} --target {contents.target}")
        _remove_leftovers()
        base = self._base()
        self.kernel, self.initrd = (self._of_boot(base, name) for name in ("vmlinuz", "initrd.img"))
        self.disk = self._disk(base)

    def _base(self):
        options = [f"--include={','.join(PACKAGES)}", "--variant=minbase"]
        options += [f"--dpkgopt=path-exclude={pattern}" for pattern in LEFT_OUT]
        hooks = []
        for path, text in INITRAMFS.items():
            hooks += [f'--essential-hook=mkdir -p "$(dirname "$1{path}")"',
                      f'--essential-hook=printf %s {_quoted(text)} > "$1{path}"']
        words = [*options, *hooks, SUITE]
        base = CACHE / f"debian-{_digest(words)}.tar"
        if not base.exists():
            self._say("making the Debian system; this takes some minutes, once")
            self._make(base, ["mmdebstrap", "--quiet", "--format=tar", "--aptopt=Acquire::Retries \"3\"", *words,
                              "{}"])
        return base

    def _of_boot(self, base, name):
        target = base.with_suffix(f".{name}")
        if not target.exists():
            self._make(target, ["bash", "-c", f"tar --extract --to-stdout --wildcards --file '{base}'"
                                              f" './boot/{name}-*' > '{{}}'"])
        return target

    def _disk(self, base):
        with tempfile.TemporaryDirectory(dir=CACHE, prefix="layer-") as layer:
            self._fill(Path(layer))
            words = [base.name, (HERE / "make-disk").read_text("utf-8"), *_contents(Path(layer))]
            disk = CACHE / f"{self._contents.kind}-{_digest(words)}.ext4"
            if not disk.exists():
                self._say("putting the packages and tests onto the machine's disk")
                self._make(disk, [*_as_root(), str(HERE / "make-disk"), str(base), layer, "{}"])
        return disk

    def _fill(self, layer):
        """Everything that is not Debian's."""
        shutil.copytree(HERE / "root", layer, dirs_exist_ok=True)
        home = layer / "opt/bramd-system"
        for name in self._contents.sources:
            _copy(SOURCE / name, home / name)
        _copy(HERE / "set-up", home / "set-up")
        for name in self._contents.programs:
            target = home / "build" / name
            target.parent.mkdir(parents=True, exist_ok=True)
            subprocess.run(["strip", "-o", target, self._build / name], check=True)
        for files in self._data.values():
            for path in files:
                _copy(path, home / "build" / path.relative_to(self._build))
        self._add_packages(home / "packages")

    def _add_packages(self, directory):
        self._say("building the packages")
        done = subprocess.run([SOURCE / "tools/package"], capture_output=True, text=True,
                              check=False)
        if done.returncode != 0:
            raise Unable(done.stderr)
        directory.mkdir()
        for package in done.stdout.split():
            shutil.copy(package, directory)

    def _make(self, target, command):
        """Runs a command with "{}" replaced by a temporary name, which then becomes target. Older
        files of the kind go."""
        part = target.with_name(f"{target.name}.part")
        log = target.with_name(f"{target.name}.log")
        with open(log, "wb") as output:
            done = subprocess.run([word.replace("{}", str(part)) for word in command],
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                  check=False)
        if done.returncode != 0:
            tail = log.read_text("utf-8", "replace").splitlines()[-20:]
            raise Unable("\n".join([*tail, f"{target.name} could not be made; the log is {log}"]))
        kind = target.name.split("-")[0]
        for old in CACHE.glob(f"{kind}-*{target.suffix}"):
            old.unlink()
        part.rename(target)


def _remove_leftovers():
    """What a process left that was killed while it made something here; what root made goes with
    the next disk."""
    for path in CACHE.glob("*.part*"):
        if path.is_file():
            path.unlink()
    for path in CACHE.glob("layer-*"):
        shutil.rmtree(path)


def _copy(source, target):
    """A file, or a directory without what was made there or is no use unbuilt."""
    target.parent.mkdir(parents=True, exist_ok=True)
    if source.is_dir():
        shutil.copytree(source, target,
                        ignore=shutil.ignore_patterns("__pycache__", "*.pyc", "*.cpp", "*.h"))
    else:
        shutil.copy(source, target)


def _as_root():
    """What a command must be run by so that it may make files of any owner."""
    if os.getuid() == 0:
        return []
    command = ["unshare", "--map-root-user", "--map-auto", "--"]
    attempt = subprocess.run([*command, "true"], capture_output=True, text=True, check=False)
    if attempt.returncode != 0:
        raise Unable(f"images need root or user namespaces: {attempt.stderr.strip()}")
    return command


def _contents(directory):
    """Names, modes and digests of all files below."""
    for path in sorted(directory.rglob("*")):
        name = str(path.relative_to(directory))
        if path.is_symlink():
            yield f"{name} -> {os.readlink(path)}"
        elif path.is_file():
            digest = hashlib.sha256(path.read_bytes()).hexdigest()
            yield f"{name} {path.stat().st_mode:o} {digest}"


def _digest(words):
    return hashlib.sha256("\0".join(words).encode()).hexdigest()[:16]


def _quoted(text):
    return "'" + text.replace("'", "'\\''") + "'"
