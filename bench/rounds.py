"""Taking turns: whatever slows the machine down slows down figure and floor alike."""

import json
import os
import re
import statistics
import subprocess
from pathlib import Path

# What the log categories cost is not what is measured: nobody listens.
QUIET = {"QT_LOGGING_RULES": "*.debug=false"}


def program(name):
    """The path of a program of this directory."""
    return Path(os.environ["BRAMD_BUILD_DIR"]) / "bench" / name


def in_turns(rounds, contestants):
    """Runs every contestant (name: function that returns a dict of numbers) once per round, and
    returns name: dict of medians."""
    results = {name: [] for name in contestants}
    for _round in range(rounds):
        for name, contestant in contestants.items():
            results[name].append(contestant())
    return {name: {key: statistics.median(result[key] for result in taken) for key in taken[0]}
            for name, taken in results.items()}


def instructions(function, name, *arguments):
    """Runs one of our programs and returns how many instructions of it, and of its libraries, were
    carried out inside the functions that match the pattern."""
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
               f"--toggle-collect={function}", program(name), *arguments]
    output = subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, env={**os.environ, **QUIET}).stderr
    return int(re.search(rb"Collected : (\d+)", output)[1])


def cost(name, *arguments):
    """Runs one of our programs and returns what it says to have taken, in microseconds an item:
    wall time and processor time."""
    command = [str(word) for word in (program(name), *arguments)]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE,
                            env={**os.environ, **QUIET}).stdout
    taken = json.loads(output.splitlines()[-1])
    return {"wall": taken["wall_ns"] / taken["items"] / 1000,
            "cpu": taken["cpu_ns"] / taken["items"] / 1000}
