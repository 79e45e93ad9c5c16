"""The manual pages."""

import os
import subprocess

import pytest


@pytest.mark.parametrize("page", ["man8/bramd.8", "man5/app-blacklist.5",
                                  "man1/bramd-launcher.1", "man1/bramd-open-apk.1"])
def test_a_page_is_typeset_without_a_warning(installed, page):
    shown = subprocess.run(
        ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
         installed / "usr/share/man" / page],
        check=True, capture_output=True, text=True,
        env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
    assert shown.stderr == ""
    assert "DESCRIPTION" in shown.stdout
