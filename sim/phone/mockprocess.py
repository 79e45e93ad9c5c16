"""Processes of python3-dbusmock, each forked from one that has loaded it already."""

import ctypes
import functools
import json
import os
import select
import socket
import subprocess

from .process import Process

PARENT = "phone.mockparent"
PR_SET_CHILD_SUBREAPER = 36


class MockProcess(Process):
    """A process of python3-dbusmock; the command is its arguments."""

    def _start(self, command, environment, stdin, output):
        return _Forked(_parent().fork(command, environment, output))


class _Parent:
    """The process that all are forked from. It ends with this one, whose end of the socket it sees
    closed."""

    def __init__(self):
        self._socket, other_end = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with other_end:
            subprocess.Popen(  # pylint: disable=consider-using-with
                ["/usr/bin/python3", "-m", PARENT], stdin=other_end, start_new_session=True)

    def fork(self, arguments, environment, output):
        """Returns the number of a process that is a child of ours."""
        message = json.dumps({"arguments": arguments, "environment": environment}).encode()
        # Whoever is orphaned at this moment becomes ours, and is to be nobody else.
        _set_subreaper(True)
        try:
            socket.send_fds(self._socket, [message], [output.fileno()])
            answer = self._socket.recv(64)
        finally:
            _set_subreaper(False)
        if not answer:
            raise RuntimeError(f"{PARENT} has ended")
        return int(answer)


class _Forked:
    """What is used of subprocess.Popen, for a child that somebody else has started."""

    def __init__(self, pid):
        self.pid = pid
        self._status = None

    def poll(self):
        if self._status is None:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                self._status = os.waitstatus_to_exitcode(status)
        return self._status

    def wait(self, timeout=None):
        if self.poll() is None:
            descriptor = os.pidfd_open(self.pid)
            try:
                if not select.select([descriptor], [], [], timeout)[0]:
                    raise subprocess.TimeoutExpired("dbusmock", timeout)
            finally:
                os.close(descriptor)
        return self.poll()

    def send_signal(self, number):
        if self.poll() is None:
            os.kill(self.pid, number)


@functools.lru_cache(maxsize=None)
def _parent():
    return _Parent()


def _set_subreaper(is_one):
    if ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, int(is_one), 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")
