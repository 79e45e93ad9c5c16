"""What a machine must offer for some of the tests."""

from pathlib import Path

import pytest


def _has_several_users():
    """In a user namespace of an ordinary user's making, root is the only user there is."""
    ranges = [line.split() for line in Path("/proc/self/uid_map").read_text("ascii").splitlines()]
    return sum(int(count) for _inside, _outside, count in ranges) > 1


needs_other_users = pytest.mark.skipif(
    not _has_several_users(), reason="needs a second user: run the tests as root")
