"""A bare Debian 12 system in a directory, in which packages come and go."""

import os
import subprocess
from pathlib import Path

SUITE = "bookworm"
PATH = "/usr/local/sbin:/usr/sbin:/usr/bin:/sbin:/bin"
# Stands in for systemd, which does not run here: says yes, and keeps what it was asked. Units are
# enabled by the real one.
SYSTEMCTL = """#!/bin/sh
case "$*" in
    --root=*) exec /bin/systemctl "$@" ;;
    *is-enabled*) echo enabled ;;
    *bramd*) echo "$*" >>/run/asked ;;
esac
"""
CHANGES = {"start", "stop", "restart", "try-restart", "reload-or-restart"}


class BareRoot:
    """Made from a tar archive by mmdebstrap, which is kept in the cache directory, as are the
    packages that apt fetches."""

    def __init__(self, directory, cache):
        self.path = directory
        self.archives = cache / "archives"
        self.archives.mkdir(parents=True, exist_ok=True)
        archive = cache / f"{SUITE}.tar"
        if not archive.exists():
            unfinished = archive.with_suffix(".new.tar")
            subprocess.run(["mmdebstrap", "--quiet", "--variant=apt", SUITE, unfinished], check=True)
            unfinished.rename(archive)
        subprocess.run(["tar", "-xf", archive, "-C", directory], check=True)
        self.write("etc/resolv.conf", Path("/etc/resolv.conf").read_text(encoding="utf-8"))
        self.write("usr/local/sbin/systemctl", SYSTEMCTL)
        (directory / "usr/local/sbin/systemctl").chmod(0o755)
        (directory / "run/systemd/system").mkdir(parents=True)
        (directory / "mnt/archives").mkdir()

    def write(self, name, text=""):
        """Writes a file, with the directories that it is in."""
        path = self.path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.unlink(missing_ok=True)
        path.write_text(text, encoding="utf-8")

    def run(self, *command, check=True):
        """Runs a command in it, with processes of its own."""
        inside = ('mount --bind "$1" "$2/mnt/archives" && mount -t proc proc "$2/proc" && '
                  'root=$2 && shift 2 && exec chroot "$root" "$@"')
        result = subprocess.run(
            ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--propagation", "private",
             "sh", "-c", inside, "sh", self.archives, self.path, *command],
            check=False, capture_output=True, text=True,
            env={"PATH": PATH, "LC_ALL": "C.UTF-8",
                 "DEBIAN_FRONTEND": "noninteractive",
                 **{name: value for name, value in os.environ.items() if name.endswith("_proxy")}})
        assert not check or result.returncode == 0, result.stdout + result.stderr
        return result

    def apt_get(self, *arguments):
        return self.run("apt-get", "-qq", "-o", "Dir::Cache::archives=/mnt/archives",
                        "-o", "APT::Keep-Downloaded-Packages=true", "-o", "APT::Sandbox::User=root",
                        "-o", f"DPkg::Path={PATH}", "--no-install-recommends", "--yes", *arguments)

    def asked_of_systemd(self):
        """What maintainer scripts have started and stopped since the last call."""
        record = self.path / "run/asked"
        lines = record.read_text(encoding="utf-8").splitlines() if record.exists() else []
        record.unlink(missing_ok=True)
        return [line for line in lines if not CHANGES.isdisjoint(line.split())]

    def named(self, part):
        """The paths whose name contains a word, but for what logs and apt keep."""
        found = self.run("find", "/", "-xdev", "-name", f"*{part}*", "-not", "-path", "/var/log/*",
                         "-not", "-path", "/var/cache/apt/*").stdout
        return sorted(found.splitlines())
