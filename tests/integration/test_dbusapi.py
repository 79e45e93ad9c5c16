"""docs/dbus-api.md: what it lists is what is published, and its examples work."""

import re
import xml.etree.ElementTree
from pathlib import Path

import pytest

from phone.namespace import USER
from phone.waiting import wait_for

import tools
from daemonsteps import (claim_missing_settings_entries, forgive_deaths,
                         start_beside_runtime)
from hostfiles import PARTNER_SPACE, download, traces

SOURCES = Path(__file__).resolve().parents[2]
DOCUMENT = SOURCES / "docs/dbus-api.md"
INTERFACE = SOURCES / "data/com.corvo.bramd.xml"

HOME = Path("/home") / USER

NOT_IMPLEMENTED = "QMetaObject::invokeMethod: No such method BramDaemon::isRunning()"


def headings():
    text = DOCUMENT.read_text(encoding="utf-8")
    return [line.removeprefix("### ") for line in text.splitlines() if line.startswith("### ")]


def published():
    """Every member of the interface, as a heading of the document."""
    for member in xml.etree.ElementTree.parse(INTERFACE).iter():
        if member.tag not in ("method", "signal"):
            continue
        arguments = {"in": [], "out": []}
        for argument in member.iter("arg"):
            direction = argument.get("direction", "in")
            arguments[direction].append(f"{argument.get('type')} {argument.get('name')}")
        yield ("signal " * (member.tag == "signal") + member.get("name")
               + f"({', '.join(arguments['in'])})"
               + "".join(f" → {text}" for text in arguments["out"]))


def examples():
    """(heading, command) of every call in the document, in its order."""
    found = []
    for part in DOCUMENT.read_text(encoding="utf-8").split("\n### ")[1:]:
        heading, _newline, text = part.partition("\n")
        blocks = re.findall(r"(?:^    .*\n)+", text + "\n", re.MULTILINE)
        found += [(heading, block) for block in blocks if " call " in block]
    return found


def test_every_member_is_documented_with_its_arguments():
    assert sorted(headings()) == sorted(published())


def test_every_method_has_an_example():
    methods = [heading for heading in published() if not heading.startswith("signal ")]
    assert {heading for heading, _command in examples()} == set(methods)


@pytest.mark.phone(services=("notifications", "homescreen"))
def test_the_examples_work_one_after_the_other(phone):
    start_beside_runtime(phone)
    download("papertrail")
    download("weather")
    download("metronome-1", as_name="metronome.apk")
    PARTNER_SPACE.mkdir(exist_ok=True)
    (HOME / "Documents").mkdir(exist_ok=True)
    (HOME / "Documents/letter.pdf").write_bytes(b"%PDF-1.4\n")
    for heading, command in examples():
        name = heading.partition("(")[0]
        assert re.search(rf"\b{name}\b", command), command
        since = phone.daemon.log.mark()
        result = tools.run("sh", "-c", command, HOME=str(HOME))
        assert (result.returncode, result.stderr) == (0, ""), command
        if "→ b success" in heading:
            assert result.stdout == "b true\n", command
        if name.startswith("install"):
            wait_for(traces, "the app's entries")
        if name == "removeFile":
            wait_for(lambda: not [path for path in traces() if "papertrail" in path], "its end")
            claim_missing_settings_entries(phone, since)
    phone.daemon.log.expect(NOT_IMPLEMENTED, "warning")
    # The last example stops the runtime.
    phone.unit.wait_for_state("inactive")
    forgive_deaths(phone)
    assert phone.daemon.log.unclaimed_trouble() == []
