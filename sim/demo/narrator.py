"""Tells a person what happens, in lines of one form."""

import sys
import time


class Failure(Exception):
    """A claim of the demonstration did not hold."""


def check(holds, complaint):
    """Ends the demonstration with this complaint unless the claim holds."""
    if not holds:
        raise Failure(complaint)


class Narrator:
    """Prints headings, steps and details; in colour on a terminal only."""

    def __init__(self, stream=sys.stdout):
        self._stream = stream
        self._colour = stream.isatty()
        self._begin = time.monotonic()

    def heading(self, name, remark=""):
        self._print(f"\n{self._paint('1', name)}{'  ' + remark if remark else ''}")

    def step(self, name, text):
        """A step that has been checked."""
        self._print(f"  {self._paint('32', f'{name:<16}')}{text}")

    def detail(self, text):
        """A line that belongs to the step before it."""
        self._print(f"  {'':<16}{self._paint('2', text)}")

    def failure(self, text):
        self._print(f"\n{self._paint('31', 'FAILED')}  {text}")

    @property
    def seconds(self):
        return time.monotonic() - self._begin

    def _paint(self, code, text):
        return f"\033[{code}m{text}\033[0m" if self._colour else text

    def _print(self, line):
        print(line, file=self._stream, flush=True)
