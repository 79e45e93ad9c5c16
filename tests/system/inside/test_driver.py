"""The binder library on the kernel's own driver."""

import os
import subprocess
from pathlib import Path

import pytest

PROGRAMS = Path(os.environ["BRAMD_BUILD_DIR"]) / "tests" / "sim"


@pytest.mark.parametrize("program", ["tst_driver_kernel", "tst_library_kernel"])
def test_the_driver_tests_pass_on_the_kernels_driver(program):
    """On a device of their own: the runtime's has its context manager."""
    done = subprocess.run([PROGRAMS / program], env={**os.environ, "BINDER_DEVICE": "/dev/drivertest"},
                          capture_output=True, text=True, check=False, timeout=600)
    assert done.returncode == 0, done.stdout + done.stderr
    assert "0 failed, 0 skipped" in done.stdout, done.stdout
