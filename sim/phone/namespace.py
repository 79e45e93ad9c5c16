"""The phone's private file tree: every fixed path of bramd and its neighbours, empty or as built.

A directory in which something must be private is rebuilt on a tmpfs: what the host has there is
bound in, entry by entry, except for the names that the phone replaces. That needs nothing but
tmpfs and bind mounts, so it works in containers and user namespaces alike, and it keeps whatever
is mounted further down (a checkout below /home included).
"""

import ctypes
import os
import stat
import subprocess
from pathlib import Path

USER = "phone-user"
USER_ID = 100000
PRIVILEGED_GROUP_ID = 100001

DEVICES = ("null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts", "shm",
           "fd", "stdin", "stdout", "stderr")

MS_NOSUID, MS_BIND, MS_MOVE, MS_REC, MS_PRIVATE = 2, 4096, 8192, 16384, 1 << 18

_libc = ctypes.CDLL(None, use_errno=True)


class NotAllowed(Exception):
    """This machine lets the caller make no namespaces."""


def unshare_command():
    """The command line that runs the words after it as first process of new namespaces."""
    command = ["/usr/bin/unshare", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child",
               "--propagation", "private"]
    if os.getuid() != 0:
        command += ["--user", "--map-root-user"]
    attempt = subprocess.run([*command, "/bin/true"], check=False, capture_output=True, text=True)
    if attempt.returncode != 0:
        raise NotAllowed(attempt.stderr.strip())
    return command


def build(build_directory):
    """Makes the paths private; to be called once, as first process of the new namespaces."""
    os.umask(0o022)
    _mount("tmpfs", "/run", "tmpfs", MS_NOSUID, "mode=755")
    _rebuild("/dev", keep=DEVICES)
    _rebuild("/etc", drop=("bramd", "group", "passwd"), edit=_add_accounts)
    _rebuild("/home", drop=(".android", USER), edit=_make_home)
    _rebuild("/opt", drop=("umbra",))
    _rebuild("/usr/bin", drop=("invoker", "store-client"))
    _rebuild("/usr/share", drop=("applications", "bramd", "corvo-settings", "translations"),
             edit=lambda new, _old: _make_shared_data(new, build_directory))
    _rebuild("/var/lib", drop=("bramd",))


def mount_tmpfs(directory, *options):
    """Mounts a tmpfs, e.g. a small ("size=64k") or a read-only ("ro") one."""
    flags = 1 if "ro" in options else 0
    data = ",".join(option for option in options if option != "ro")
    _mount("tmpfs", str(directory), "tmpfs", flags, data)


def bind(source, directory):
    """Puts one directory over another; undone by unmount()."""
    _mount(str(source), str(directory), None, MS_BIND, None)


def make_read_only(directory):
    """Puts a read-only view of a directory over itself; undone by unmount()."""
    _mount(str(directory), str(directory), None, MS_BIND, None)
    _mount(None, str(directory), None, MS_BIND | 32 | 1, None)


def unmount(directory):
    """Undoes the newest mount on a directory, even when a process still looks into it."""
    if _libc.umount2(os.fsencode(str(directory)), 2) != 0:
        _fail("umount", directory)


def _rebuild(directory, keep=None, drop=(), edit=None):
    """Replaces a directory by a tmpfs with the host's entries, but for those named in drop (or,
    with keep, not named there); edit(new, old) then adds the phone's own."""
    stage = Path("/run/stage")
    stage.mkdir()
    _mount("tmpfs", str(stage), "tmpfs", 0, "mode=755")
    for name in sorted(os.listdir(directory)):
        if name not in drop and (keep is None or name in keep):
            _bring_in(os.path.join(directory, name), os.path.join(stage, name))
    if edit:
        edit(stage, Path(directory))
    _mount(str(stage), directory, None, MS_MOVE, None)
    stage.rmdir()


def _bring_in(source, target):
    mode = os.lstat(source).st_mode
    if stat.S_ISLNK(mode):
        os.symlink(os.readlink(source), target)
        return
    if stat.S_ISDIR(mode):
        os.mkdir(target)
    else:
        os.close(os.open(target, os.O_CREAT | os.O_WRONLY | os.O_CLOEXEC, 0o644))
    _mount(source, target, None, MS_BIND | MS_REC, None)


def _add_accounts(new, old):
    (new / "bramd").mkdir()
    passwd = (old / "passwd").read_text(encoding="utf-8")
    passwd += f"{USER}:x:{USER_ID}:{USER_ID}:The phone's user:/home/{USER}:/bin/sh\n"
    (new / "passwd").write_text(passwd, encoding="utf-8")
    group = (old / "group").read_text(encoding="utf-8")
    group += f"{USER}:x:{USER_ID}:\nprivileged:x:{PRIVILEGED_GROUP_ID}:\n"
    (new / "group").write_text(group, encoding="utf-8")


def _make_home(new, _old):
    home = new / USER
    (home / "Downloads").mkdir(parents=True)
    if os.geteuid() == 0:
        for path in (home, home / "Downloads"):
            try:
                os.chown(path, USER_ID, USER_ID)
            except OSError:
                return  # In a user namespace root is the only user there is.


def _make_shared_data(new, build_directory):
    for directory in ("applications", "bramd", "corvo-settings/entries", "translations"):
        (new / directory).mkdir(parents=True)
    for catalogue in build_directory.glob("data/**/*.qm"):
        (new / "translations" / catalogue.name).write_bytes(catalogue.read_bytes())


def _mount(source, target, kind, flags, data):
    encoded = [None if text is None else os.fsencode(text) for text in (source, target, kind, data)]
    source_bytes, target_bytes, kind_bytes, data_bytes = encoded
    if _libc.mount(source_bytes, target_bytes, kind_bytes, ctypes.c_ulong(flags), data_bytes) != 0:
        _fail("mount", target)


def _fail(what, path):
    number = ctypes.get_errno()
    raise OSError(number, f"{what}: {os.strerror(number)}", str(path))
