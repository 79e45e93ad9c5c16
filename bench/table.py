"""The figures, and how they are shown."""

import operator
from dataclasses import asdict, dataclass
from typing import Optional

# Before the records, as JSON, where they are told on a line.
RECORDS = "bench: records "

_HEAD = ("Figure", "Value", "Floor or peer", "Its value", "Ratio", "Target", "")
_SENSES = {"<=": operator.le, ">=": operator.ge, "=": operator.eq}


@dataclass
class Figure:
    """One line of the table. The target is about the ratio where there is a floor, else about the
    value."""

    name: str
    value: float
    unit: str
    target: Optional[float]
    sense: str = "<="
    floor_name: str = ""
    floor: Optional[float] = None

    @property
    def ratio(self):
        return None if self.floor is None else self.value / self.floor

    @property
    def met(self):
        """Figures without target are there to be seen."""
        judged = self.value if self.ratio is None else self.ratio
        return self.target is None or _SENSES[self.sense](judged, self.target)


class Table:
    """Figures, each told as soon as it is there."""

    def __init__(self):
        self._figures = []

    def add(self, *arguments, **keywords):
        figure = Figure(*arguments, **keywords)
        self._figures.append(figure)
        print(f"bench: {figure.name}: {_text(figure.value, figure.unit)}", flush=True)

    def all_met(self):
        return all(figure.met for figure in self._figures)

    def print(self):
        rows = [_HEAD]
        rows += [_row(figure) for figure in self._figures]
        widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
        for row in rows:
            cells = [cell.ljust(width) if column in (0, 2) else cell.rjust(width)
                     for column, (cell, width) in enumerate(zip(row, widths))]
            print("  ".join(cells).rstrip())

    def records(self):
        """All that is known of the figures, for programs."""
        return [{**asdict(figure), "ratio": figure.ratio, "met": figure.met}
                for figure in self._figures]


def markdown(records):
    """The same table for a document."""
    names = Figure.__dataclass_fields__
    rows = [_HEAD, ("---",) * len(_HEAD)]
    rows += [_row(Figure(**{key: record[key] for key in names})) for record in records]
    return "\n".join("| " + " | ".join(row).rstrip() + " |" for row in rows)


def _row(figure):
    floor = "" if figure.floor is None else _text(figure.floor, figure.unit)
    ratio = "" if figure.ratio is None else f"{figure.ratio:.2f}"
    target = "" if figure.target is None else f"{figure.sense} {figure.target:g}"
    return (figure.name, _text(figure.value, figure.unit), figure.floor_name, floor, ratio, target,
            "" if figure.met else "MISSED")


def _text(value, unit):
    digits = 0 if value == int(value) or abs(value) >= 100 else 1 if abs(value) >= 10 else 2
    return f"{value:.{digits}f} {unit}".rstrip()
