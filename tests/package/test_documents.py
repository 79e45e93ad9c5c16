"""What the documents name is there."""

import re

import pytest

from conftest import SOURCES

DOCUMENTS = ["README.md", "CONTRIBUTING.md", "SECURITY.md",
             *(f"docs/{path.name}" for path in sorted((SOURCES / "docs").glob("*.md")))]
TOPS = ("src/", "tests/", "docs/", "tools/", "cmake/", "debian/")


def text_of(document):
    return (SOURCES / document).read_text("utf-8")


@pytest.mark.parametrize("document", DOCUMENTS)
def test_links_lead_to_files(document):
    for link in re.findall(r"\]\(([^)#]+)\)", text_of(document)):
        if "://" not in link:
            assert ((SOURCES / document).parent / link).resolve().exists(), link


@pytest.mark.parametrize("document", DOCUMENTS)
def test_paths_of_the_sources_exist(document):
    for path in re.findall(r"`([\w./-]+)`", text_of(document)):
        if path.startswith(TOPS):
            assert (SOURCES / path).exists(), path


def test_the_tests_of_each_guard_exist():
    _, _, table = text_of("docs/security.md").partition("## Doors and guards")
    rows = re.findall(r"^\| [^|]+\| [^|]+\| ([^|]+) \|$", table, re.MULTILINE)[1:]
    assert len(rows) > 15
    scripts = {path.name for path in (SOURCES / "tests").rglob("test_*.py")}
    programs = {path.stem for path in (SOURCES / "tests").rglob("*st_*.cpp")}
    targets = {path.stem.removeprefix("fuzz_") for path in (SOURCES / "tests/fuzz").glob("fuzz_*")}
    for row in rows:
        named = re.findall(r"`([\w./]+)`", row)
        assert named, row
        for name in named:
            assert name in scripts | programs | targets or (SOURCES / name).exists(), name
