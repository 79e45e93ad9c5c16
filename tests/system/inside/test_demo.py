"""The story that ./demo --vm tells."""

import subprocess
import sys


def test_the_whole_story_comes_true(phone):
    """It is told by a process of its own, which looks at the same phone."""
    assert phone.daemon.pid
    done = subprocess.run([sys.executable, "-m", "realdemo"], capture_output=True, text=True,
                          check=False, timeout=900)
    assert done.returncode == 0, done.stdout + done.stderr
    assert "every line above was checked" in done.stdout, done.stdout
