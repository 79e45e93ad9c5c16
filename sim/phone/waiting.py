"""Waiting for conditions, never for time."""

import time

from gi.repository import GLib

INTERVAL_S = 0.01

# All time limits are multiplied by it; whoever runs on a slow machine sets it.
slowness = 1


class Timeout(AssertionError):
    """A condition did not come true in time."""


def wait_for(condition, what, timeout=10):
    """Calls condition() until it returns something true, which is returned. D-Bus signals are
    delivered meanwhile. `what` names the condition for the Timeout raised after timeout seconds;
    it may be a function, called only then."""
    deadline = time.monotonic() + timeout * slowness
    while True:
        deliver_signals()
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise Timeout(f"waited {timeout * slowness} s in vain for {what() if callable(what) else what}")
        time.sleep(INTERVAL_S)


def deliver_signals():
    """Runs the handlers of all D-Bus signals that have arrived."""
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass
