"""The manual pages."""

import os
import re
import subprocess
from pathlib import Path

import pytest

from conftest import SOURCES

@pytest.mark.parametrize("page", ["man8/bramd.8", "man5/app-blacklist.5",
                                  "man1/bramctl.1", "man1/bramd-launcher.1",
                                  "man1/bramd-open-apk.1"])
def test_a_page_is_typeset_without_a_warning(installed, page):
    shown = subprocess.run(
        ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
         installed / "usr/share/man" / page],
        check=True, capture_output=True, text=True,
        env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
    assert shown.stderr == ""
    assert "DESCRIPTION" in shown.stdout


def tool(name, *words):
    return subprocess.run([Path(os.environ["BRAMD_BUILD_DIR"]) / "bin" / name, *words], check=True,
                          capture_output=True, text=True).stdout


def bramctl(*words):
    return tool("bramctl", *words)


def test_the_page_of_bramctl_has_every_command_and_option():
    table = bramctl("--help").split("Commands:\n")[1].split("\n\n")[0]
    commands = [line.split()[0] for line in table.splitlines()]
    pages = [bramctl("help", command) for command in commands]
    expected = []
    for page in pages:
        usage = " ".join(page.split("\n\n")[0].split())
        expected.append(usage.removeprefix("Usage: bramctl "))
        options = page.partition("\nOptions:\n")[2].splitlines()
        expected += [re.split("  +", line.strip())[0] for line in options]

    text = (SOURCES / "data/man/bramctl.1").read_text(encoding="utf-8").replace("\\-", "-")
    section = text.split(".SH COMMANDS\n")[1].split(".SH ")[0]
    assert re.findall(r"^\.TP\n\.B (.*)$", section, re.MULTILINE) == expected
    assert len(commands) > 20


# What says, in any of the texts, that an exit status has this meaning.
MEANINGS = {"Done": "done|taken", "Refused": "refused", "Usage": "usage|command line",
            "NotConfirmed": "in time", "DaemonUnreachable": "reach", "RuntimeUnavailable": "runtime"}


def statuses():
    """The numbers of the exit statuses, by name."""
    header = (SOURCES / "src/tools/common/exitstatus.h").read_text(encoding="utf-8")
    return dict(re.findall(r"^    (\w+) = (\d+),$", header, re.MULTILINE))


def check_statuses(explained):
    """(number, text) pairs explain each status, in order, and as what it is."""
    assert [number for number, _text in explained] == list(statuses().values())
    for (_number, text), name in zip(explained, statuses()):
        assert re.search(MEANINGS[name], text, re.IGNORECASE), (name, text)


@pytest.mark.parametrize("name", ["bramctl", "bramd-launcher", "bramd-open-apk"])
def test_every_exit_status_is_explained(name):
    help_text = tool(name, "--help").replace("\n", " ")
    _before, _begin, text = re.split("(Exit status:|It ends with)", help_text)
    check_statuses(re.findall(r"\b(\d) ([^\d]*)", text))

    page = (SOURCES / f"data/man/{name}.1").read_text(encoding="utf-8")
    section = page.split(".SH EXIT STATUS\n")[1].split("\n.SH ")[0]
    check_statuses(re.findall(r"^\.B (\d)\n([^.].*(?:\n[^.].*)*)", section, re.MULTILINE))
