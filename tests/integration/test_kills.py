"""A daemon that is killed before any system call of an announcement, an install or a removal, and
started again: no file is torn, and the next announcement repairs what was not done.

All calls take minutes (tests/soak/faults). Otherwise it is some of those that change the disk."""

import pytest

from faulttrial import ALL, without_unnamed_files

FILE_SYSTEMS = [pytest.param(without_unnamed_files, id="without unnamed files")]
if ALL:
    FILE_SYSTEMS.append(pytest.param(lambda fault: fault, id=""))


@pytest.mark.parametrize("file_system", FILE_SYSTEMS)
def test_a_daemon_that_is_killed(trial):
    for number in range(len(trial.calls)) if ALL else trial.changes()[::5]:
        trial.kill(number)
