"""docs/host-files.md: the runtime gets the paths that it promises."""

import re
from pathlib import Path

from daemonsteps import start_beside_runtime
from launches import started_intents

DOCUMENT = Path(__file__).resolve().parents[2] / "docs/host-files.md"


def rows():
    """(path or URL on the host, path in the runtime) of every row of the table."""
    return re.findall(r"^\| `([^`]+)` \| `([^`]+)` \|", DOCUMENT.read_text(encoding="utf-8"),
                      re.MULTILINE)


def test_every_row_of_the_table_is_what_the_runtime_gets(phone):
    start_beside_runtime(phone)
    promised = rows()
    assert len(promised) >= 6
    for on_host, _in_runtime in promised:
        phone.bramd.call("launchIntent", "ssssssa{sv}", "", on_host, "", "", "", "", {})
    assert [intent["data"] for intent in started_intents(phone)] == [
        f"file://{in_runtime}" for _on_host, in_runtime in promised]
