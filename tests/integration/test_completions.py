"""What shells offer for the word that somebody is writing."""

import shutil
import subprocess
from pathlib import Path

import pytest

from bramctl import bramctl, environment
from daemonsteps import start_beside_runtime
from hostfiles import DOWNLOADS, download
from parcels import ADD_LAUNCHER, launcher

SCRIPTS = Path(__file__).resolve().parents[2] / "data/completions"
METRONOME = "org.example.metronome"
PAPERTRAIL = "org.example.papertrail"

# Each prints the words offered for the last of its arguments, one per line.
BASH = f"""source {SCRIPTS}/bramctl.bash
compopt() {{ echo :files; }}
COMP_WORDS=(bramctl "$@")
COMP_CWORD=$#
_bramctl
((${{#COMPREPLY[@]}})) && printf '%s\\n' "${{COMPREPLY[@]}}"
"""
ZSH = f"""_files() {{ print :files }}
compset() {{ : }}
_describe() {{ print -l -- ${{${{(P)2}}%%:*}} }}
words=(bramctl "$@")
CURRENT=$#words
source {SCRIPTS}/_bramctl
"""
FISH = f"""source {SCRIPTS}/bramctl.fish
cd {DOWNLOADS}
complete --do-complete "bramctl $argv" | string replace --regex "\\t.*" ""
"""
SHELLS = {"bash": ["bash", "-c", BASH, "bash"], "zsh": ["zsh", "-fc", ZSH, "zsh"],
          "fish": ["fish", "--no-config", "-c", FISH]}


def offered(shell, *words):
    result = subprocess.run([*SHELLS[shell], *words], check=False, capture_output=True, text=True,
                            cwd=DOWNLOADS, env=environment(), timeout=60)
    assert result.stderr == "", result
    return sorted(result.stdout.split())


@pytest.mark.parametrize("shell", SHELLS)
def test_what_fits_is_offered(phone, shell):
    assert shutil.which(shell), f"{shell} is not installed: run tools/setup"
    start_beside_runtime(phone)
    for name in ("papertrail", "metronome-1"):
        bramctl("install", download(name), "--wait").done()

    table = bramctl("--help").out.split("Commands:\n")[1].split("\n\n")[0]
    assert offered(shell, "") == sorted(line.split()[0] for line in table.splitlines())
    assert offered(shell, "unh") == ["unhide"]
    assert offered(shell, "remove", "") == [METRONOME, PAPERTRAIL]
    assert offered(shell, "size", METRONOME, "org.example.p") == [PAPERTRAIL]
    assert offered(shell, "share", "a", "--to", f"{PAPERTRAIL}/{PAPERTRAIL}.ShareO") == [
        f"{PAPERTRAIL}/{PAPERTRAIL}.ShareOneActivity"]
    # What stands behind "=" is a word of its own for bash alone.
    target = f"{PAPERTRAIL}/{PAPERTRAIL}.ShareOneActivity"
    if shell == "bash":
        assert offered(shell, "share", "a", "--to", "=", target[:-4]) == [target]
    else:
        assert offered(shell, "share", "a", f"--to={target[:-4]}") == [f"--to={target}"]
    assert offered(shell, "launch", f"{METRONOME}/") == [f"{METRONOME}/{METRONOME}.MainActivity"]
    assert offered(shell, "install", "--w") == ["--wait"]
    assert offered(shell, "boot", METRONOME, "of") == ["off"]
    files = {":files"} if shell != "fish" else {"metronome-1.apk", "papertrail.apk"}
    assert files <= set(offered(shell, "install", ""))
    if shell == "fish":
        assert offered(shell, "intent", "--data=paper") == ["--data=papertrail.apk"]


def test_bash_offers_what_fits_what_was_typed_with_backslashes(phone):
    """As it has to be for a nested class."""
    start_beside_runtime(phone)
    package, activity = "org.example.quiz", "org.example.quiz.Outer$Inner"
    phone.runtime.call_launcher(ADD_LAUNCHER, launcher(package, activity, "Quiz"))
    assert offered("bash", "launch", f"{package}/{package}.Outer\\$In") == [
        f"{package}/{package}.Outer\\$Inner"]
