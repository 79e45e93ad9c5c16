"""What the daemon logs, as records."""

import re
from dataclasses import dataclass

from .waiting import Timeout, wait_for

# How the daemon is told to print: "<level> category: message".
MESSAGE_PATTERN = "<%{type}> %{category}: %{message}"
_RECORD = re.compile(r"<(debug|info|warning|critical|fatal)> ([\w.-]+): (.*)")

TROUBLE = ("warning", "critical", "fatal")
SANITIZER_REPORT = re.compile(r"ERROR: \w+Sanitizer|runtime error:|SUMMARY: \w+Sanitizer|==\d+== ")


@dataclass
class Record:
    """One log line. A claimed one was expected by whoever looks at the log."""

    level: str
    category: str
    text: str
    claimed: bool = False

    def __str__(self):
        return f"<{self.level}> {self.category}: {self.text}"


class DaemonLog:
    """The records in a file that the daemon appends to."""

    def __init__(self, path):
        self._path = path
        self._offset = 0
        self._records = []
        self._other_lines = []

    @property
    def records(self):
        """All records so far; a line that is still being written is not there yet."""
        with open(self._path, "rb") as file:
            file.seek(self._offset)
            news = file.read()
        complete = news[:news.rfind(b"\n") + 1]
        self._offset += len(complete)
        for line in complete.decode("utf-8", "replace").split("\n")[:-1]:
            match = _RECORD.fullmatch(line)
            if match:
                self._records.append(Record(*match.groups()))
            else:
                self._other_lines.append(line)
        return self._records

    @property
    def other_lines(self):
        """What was printed, but is no record: standard error and sanitizer reports."""
        return self._other_lines if self.records is not None else []

    def mark(self):
        """The present end of the log, for the `since` of the other functions."""
        return len(self.records)

    def texts(self, since=0, level=None, category=None):
        return [record.text for record in self.records[since:]
                if level in (None, record.level) and category in (None, record.category)]

    def count(self, text, since=0):
        return len(self._matches(text, None, None, since))

    def expect(self, text, level=None, category=None, since=0, timeout=10):
        """Waits for a record with this text (or matching this compiled pattern), claims the first
        unclaimed one and returns it."""
        def first_unclaimed():
            return next((record for record in self._matches(text, level, category, since)
                         if not record.claimed), None)
        try:
            record = wait_for(first_unclaimed, f"the log line {text!r}", timeout)
        except Timeout as error:
            raise Timeout(f"{error}; logged was:\n{self.tail(since)}") from None
        record.claimed = True
        return record

    def claim_all(self, text, level=None, category=None, since=0):
        """Claims every such record that is there, and returns how many these are."""
        matches = self._matches(text, level, category, since)
        for record in matches:
            record.claimed = True
        return len(matches)

    def unclaimed_trouble(self):
        """Warnings and worse that nobody expected, and sanitizer reports."""
        trouble = [str(record) for record in self.records
                   if record.level in TROUBLE and not record.claimed]
        return trouble + [line for line in self.other_lines if SANITIZER_REPORT.search(line)]

    def tail(self, since=0, count=60):
        return "\n".join(str(record) for record in self.records[since:][-count:])

    def _matches(self, text, level, category, since):
        def fits(record):
            same = text == record.text if isinstance(text, str) else text.fullmatch(record.text)
            return same and level in (None, record.level) and category in (None, record.category)
        return [record for record in self.records[since:] if fits(record)]
