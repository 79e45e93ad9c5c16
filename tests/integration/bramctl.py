"""bramctl as people and scripts run it, and what its answers are."""

import json
import os
import shutil
import subprocess

from phone.buses import SYSTEM_SOCKET
from phone.namespace import USER_ID

from tools import LEAKS

TIMEOUT_S = 90

DONE, REFUSED, USAGE, NOT_CONFIRMED, UNREACHABLE, NO_RUNTIME = range(6)


class Answer:
    """How one run ended, and what it said."""

    def __init__(self, completed):
        self.status = completed.returncode
        self.out = completed.stdout
        self.err = completed.stderr

    def __repr__(self):
        return f"{self.status}\n{self.out}{self.err}"

    def json(self):
        return json.loads(self.out)

    def done(self, *texts):
        """It is done, has said these, and had nothing to complain of."""
        assert self.status == DONE, self
        assert self.err == "", self
        for text in texts:
            assert text in self.out, self
        return self

    def failed(self, status, *texts):
        """It failed so, with one line for its user in which these are."""
        assert self.status == status, self
        assert self.err.startswith("bramctl: "), self
        assert self.err.count("\n") == 1, self
        for text in texts:
            assert text in self.err, self
        return self


def environment(**added):
    return {**os.environ, "LC_ALL": "C.UTF-8", "LSAN_OPTIONS": LEAKS,
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={SYSTEM_SOCKET}", **added}


def bramctl(*words, answer="", cwd="/", **added):
    """Runs it until it ends; answer is what its user types."""
    return Answer(subprocess.run(["bramctl", *map(str, words)], check=False, capture_output=True,
                                 text=True, input=answer, cwd=cwd, timeout=TIMEOUT_S,
                                 env=environment(**added)))


def bramctl_as_user(*words):
    """The same as the phone's user, who may not be allowed to read where the build is."""
    program = shutil.copy(shutil.which("bramctl"), "/run/phone/bramctl")
    return Answer(subprocess.run(
        ["/usr/bin/setpriv", f"--reuid={USER_ID}", f"--regid={USER_ID}", "--clear-groups", program,
         *words], check=False, capture_output=True, text=True, cwd="/", timeout=TIMEOUT_S,
        env=environment()))


def start(*words, output):
    """Starts it with its output in a file."""
    with open(output, "wb") as stream:
        return subprocess.Popen(  # pylint: disable=consider-using-with
            ["bramctl", *words], stdin=subprocess.DEVNULL, stdout=stream, stderr=stream,
            env=environment())
