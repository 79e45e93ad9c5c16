"""A disk that fails at any system call of an announcement, an install or a removal: no file is torn,
the daemon goes on and says what it could not do, and the next announcement repairs it.

All calls and all errors take minutes (tests/soak/faults). Otherwise it is the first call of each
kind in each directory, with one error."""

from errno import EIO, ENOSPC, EROFS

import pytest

from faulttrial import ALL, fail_from_now_on, without_unnamed_files

FILE_SYSTEMS = [pytest.param(lambda fault: fault, id="")]
if ALL:
    FILE_SYSTEMS.append(pytest.param(without_unnamed_files, id="without unnamed files"))

pytestmark = pytest.mark.parametrize("file_system", FILE_SYSTEMS)


def test_a_call_that_fails(trial):
    for number in range(len(trial.calls)) if ALL else trial.kinds():
        errors = trial.calls[number].errors
        for error in errors if ALL else [errors[number % len(errors)]]:
            trial.fail(number, error)


def test_a_disk_that_fails_for_good(trial):
    for error in (ENOSPC, EROFS, EIO):
        for number in range(0, len(trial.calls), 1 if ALL else 60):
            if trial.can_fail_from(number, error):
                trial.fail(number, error, fail_from_now_on)
