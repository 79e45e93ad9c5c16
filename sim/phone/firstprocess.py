"""The first process of a process namespace: runs one command and outlives it by nothing."""

import os
import signal
import subprocess
import sys

FORWARDED = (signal.SIGTERM, signal.SIGHUP)


def run(command):
    """Runs command, takes in the orphans of others meanwhile, and returns command's exit status
    (128 + the signal when one ended it)."""
    # A terminal sends these to the command as well, which decides what they mean.
    for number in (signal.SIGINT, signal.SIGQUIT):
        signal.signal(number, lambda *_: None)
    try:
        child = subprocess.Popen(command)  # pylint: disable=consider-using-with
    except OSError as error:
        print(f"enter: {command[0]}: {error.strerror}", file=sys.stderr)
        return 127
    for number in FORWARDED:
        signal.signal(number, lambda received, _frame: os.kill(child.pid, received))
    while True:
        pid, status = os.wait()
        if pid == child.pid:
            code = os.waitstatus_to_exitcode(status)
            return code if code >= 0 else 128 - code
