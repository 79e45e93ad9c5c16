"""The short form of tests/soak: each way in which a runtime comes, goes and hangs, once."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "soak"))

from soak import Soak  # noqa: E402 pylint: disable=wrong-import-position

ROUNDS = 10
SEED = 1


def test_nothing_is_lost_and_nothing_leaks(phone):
    Soak(phone, SEED).run(ROUNDS)
