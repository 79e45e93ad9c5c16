"""The program from which the processes of mocks are forked, for mockprocess.py: it has loaded
python3-dbusmock, which takes longer than all that a mock does in most tests.

Its standard input is a socket. Each message there tells a mock's arguments and environment as JSON,
and comes with a descriptor for its output; the answer is the number of its process, whose parent has
ended when the answer goes out."""

import argparse  # noqa: F401 pylint: disable=unused-import
import ctypes
import json
import os
import runpy
import socket
import sys

import dbusmock.testcase  # noqa: F401 pylint: disable=unused-import


def main():
    ctypes.CDLL("libglib-2.0.so.0")
    connection = socket.socket(fileno=os.dup(sys.stdin.fileno()))
    while True:
        message, descriptors, _flags, _address = socket.recv_fds(connection, 65536, 1)
        if not message:
            return  # nobody is left to ask
        result, answer = os.pipe()
        child = os.fork()
        if child == 0:
            connection.close()
            fork_mock(json.loads(message), descriptors[0], answer)
            return
        os.close(answer)
        os.close(descriptors[0])
        os.waitpid(child, 0)
        with open(result, "rb") as pipe:
            connection.send(pipe.read())


def fork_mock(request, output, answer):
    """Goes on as a mock in a process of its own, and ends this one."""
    pid = os.fork()
    if pid:
        os.write(answer, str(pid).encode())
        os._exit(0)
    os.close(answer)
    os.setsid()
    with open(os.devnull, "rb") as nothing:
        os.dup2(nothing.fileno(), 0)
    os.dup2(output, 1)
    os.dup2(output, 2)
    os.close(output)
    os.environ.clear()
    os.environ.update(request["environment"])
    sys.argv = ["dbusmock", *request["arguments"]]
    runpy.run_module("dbusmock", run_name="__main__", alter_sys=True)


if __name__ == "__main__":
    main()
