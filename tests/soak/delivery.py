"""Follows each request from the answer of the daemon to the runtime's record of what it got.

The rules that are checked are in README.md."""

import json
import os
import re
from dataclasses import dataclass, field
from pathlib import PurePath

from phone.daemon import SERVICE
from phone.runtime import RECORD

PERSISTENT = ("package", "activity", "alarm", "umbra")

_CONNECTED = re.compile(r"Connected to Umbra Service (\S+)")
_DIED = re.compile(r"(\S+) died! Trying to reconnect\.")
_STOPPING = re.compile(r'Umbra VM is "deactivating".*')
_KEPT = re.compile(r"The runtime is gone, keeping .*")
_HANDED = re.compile(r'(Installing|Uninstalling|Launching) +(?:PackageMod\()?"([^"]*)".*')


@dataclass(frozen=True)
class Request:
    """What was asked for; the name is unique among those of a round."""

    queue: str  # "packages", "launches" or "intents": in each the order is kept
    service: str  # of the runtime
    code: int
    name: str


def install(path):
    return Request("packages", "umbra", 2, PurePath(path).name)


def removal(package):
    return Request("packages", "package", 63, package)


def launch(package):
    return Request("launches", "umbra", 1, package)


def intent(action):
    return Request("intents", "activity", 6, action)


@dataclass
class Connections:
    """What the daemon's log says of its connections, in the order of the log."""

    up: set = field(default_factory=set)
    handed: list = field(default_factory=list)  # Request, or the name of a service that went

    def forget(self):
        self.handed.clear()


class Deliveries:
    """The requests of one round after the other."""

    def __init__(self, log):
        self._log = log
        self._read = 0
        self._connections = Connections()
        self.accepted = []
        self.kept = 0  # requests that the daemon was about to hand over to a runtime that had gone

    def begin(self):
        """A new round: what was before is over."""
        self.read_log()
        self.accepted = []
        self._connections.forget()
        os.truncate(RECORD, 0)  # the runtime only ever appends

    def read_log(self):
        records = self._log.records
        for record in records[self._read:]:
            self._on_line(record.text)
        self._read = len(records)

    @property
    def is_connected(self):
        self.read_log()
        return self._connections.up.issuperset(PERSISTENT)

    @property
    def handed(self):
        """What the daemon has handed over, oldest first."""
        self.read_log()
        return [item for item in self._connections.handed if isinstance(item, Request)]

    def waiting(self):
        """How many have been accepted, and not been handed over."""
        return len(self.accepted) - len(self.handed)

    def check(self):
        """Checks the round; returns those that a dying runtime took with it."""
        received = self._received()
        lost = []
        for queue in ("packages", "launches", "intents"):
            accepted = [request for request in self.accepted if request.queue == queue]
            handed = [request for request in self.handed if request.queue == queue]
            got = [request for request in received if request.queue == queue]
            assert handed == accepted, _difference(f"{queue} handed over", handed, accepted)
            assert len(set(got)) == len(got), f"{queue} that came twice: {got}"
            delivered = [request for request in accepted if request in set(got)]
            assert got == delivered, _difference(f"{queue} received", got, delivered)
            lost += [request for request in accepted if request not in set(got)]
        for request in lost:
            self._check_loss(request)
        return lost

    def _check_loss(self, request):
        """It was the last for its service before this went."""
        later = self._connections.handed[self._connections.handed.index(request) + 1:]
        for item in later:
            if item == request.service:
                return
            assert not isinstance(item, Request) or item.service != request.service, (
                f"{request} was lost, and then {item} was handed to the same runtime")
        raise AssertionError(f"{request} was lost, and no runtime has died since")

    def _on_line(self, text):
        if match := _CONNECTED.fullmatch(text):
            self._connections.up.add(match[1])
        elif match := _DIED.fullmatch(text):
            self._connections.up.discard(match[1])
            self._connections.handed.append(match[1])
        elif _STOPPING.fullmatch(text):
            self._connections.up.clear()
            self._connections.handed += PERSISTENT
        elif match := _HANDED.fullmatch(text):
            self._connections.handed.append(_request(match[1], match[2]))
        elif _KEPT.fullmatch(text):
            self.kept += 1
            self._connections.handed.pop()

    @staticmethod
    def _received():
        found = []
        for line in RECORD.read_text(encoding="utf-8").splitlines():
            record = json.loads(line)
            decoded = record.get("decoded") or {}
            kind = (record["service"], record["code"])
            if kind == ("umbra", 2):
                found.append(install(decoded["path"]))
            elif kind == ("package", 63):
                found.append(removal(decoded["packageName"]))
            elif kind == ("umbra", 1):
                found.append(launch(decoded["packageName"]))
            elif kind == ("activity", 6):
                found.append(intent(decoded["intent"]["action"]))
        return found


def _request(verb, name):
    if verb == "Installing":
        return install(name)
    if verb == "Uninstalling":
        return removal(name)
    return intent(name) if name.startswith(f"{SERVICE}.soak.") else launch(name)


def _difference(what, found, expected):
    lines = [f"{what}:"]
    lines += [f"  too few: {request}" for request in expected if request not in found]
    lines += [f"  too many: {request}" for request in found if request not in expected]
    return "\n".join(lines + ["  in the order of the first difference:"]
                     + [f"  {pair}" for pair in zip(found, expected) if pair[0] != pair[1]][:1])
