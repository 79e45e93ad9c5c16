#!/usr/bin/python3
"""usage: watchedcalls.py SOCKET COMMAND [ARGUMENT...]

Runs COMMAND such that the kernel asks the listener on SOCKET (watchedprocess.py) before each
system call that touches the file system: whether it is to be made, or fails, or never returns.
Unlike a preloaded library this catches the calls that the C library makes for itself, and works
beside sanitizers.
"""

import ctypes
import os
import socket
import sys

# Names that an architecture does not have are left out there.
CALLS = """open openat openat2 creat mkdir mkdirat rename renameat renameat2 unlink unlinkat rmdir
link linkat symlink symlinkat chmod fchmod fchmodat fchmodat2 chown fchown lchown fchownat truncate
ftruncate fallocate read pread64 readv write pwrite64 writev lseek fsync fdatasync copy_file_range
sendfile getdents64 stat lstat fstat newfstatat statx statfs fstatfs access faccessat faccessat2
readlink readlinkat utimensat""".split()

ALLOW, NOTIFY = 0x7fff0000, 0x7fc00000

seccomp = ctypes.CDLL("libseccomp.so.2", use_errno=True)
seccomp.seccomp_init.restype = ctypes.c_void_p
seccomp.seccomp_init.argtypes = [ctypes.c_uint32]
seccomp.seccomp_rule_add_array.argtypes = [ctypes.c_void_p, ctypes.c_uint32, ctypes.c_int,
                                           ctypes.c_uint, ctypes.c_void_p]
seccomp.seccomp_load.argtypes = [ctypes.c_void_p]
seccomp.seccomp_notify_fd.argtypes = [ctypes.c_void_p]


def numbers():
    """The numbers of the watched calls on this machine, with their names."""
    found = {seccomp.seccomp_syscall_resolve_name(name.encode()): name for name in CALLS}
    return {number: name for number, name in found.items() if number >= 0}


def install_filter():
    """From now on the kernel asks; returns the descriptor on which it does."""
    context = seccomp.seccomp_init(ALLOW)
    for number in numbers():
        _check(seccomp.seccomp_rule_add_array(context, NOTIFY, number, 0, None), "rule")
    _check(seccomp.seccomp_load(context), "filter")
    return seccomp.seccomp_notify_fd(context)


def _check(status, what):
    if status != 0:
        raise OSError(-status, f"{what}: {os.strerror(-status)}")


def main(listener, *command):
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(listener)
        socket.send_fds(connection, [b"calls"], [install_filter()])
    os.execv(command[0], command)


if __name__ == "__main__":
    main(*sys.argv[1:])
