"""The simulated Android runtime, as seen from outside: its image, its control socket, its record.

The process itself belongs to the unit "umbravm.service" (unit.py)."""

import json
import shutil
import socket
from pathlib import Path

from .router import DEVICE
from .waiting import wait_for

IMAGE = Path("/opt/umbra")
DATA_ROOT = Path("/home/.android")
CONTROL = Path("/run/phone/runtime.control")
RECORD = Path("/run/phone/runtime.record")

RELEASES = {27: "8.1.0", 28: "9", 29: "10", 30: "11"}
SECURITY_PATCH = "2021-05-05"
CONTROL_TIMEOUT_S = 30


class Refused(Exception):
    """The runtime refused a control command."""


class Runtime:
    """Installed for one SDK level, and run with the same one."""

    def __init__(self, build_directory, sdk=28):
        self.sdk = sdk
        self._program = Path(build_directory) / "sim" / "bramd-sim-runtime"
        self._forgotten = 0
        self.install()

    def install(self):
        """Puts the runtime's image in its place."""
        IMAGE.mkdir(parents=True, exist_ok=True)
        (IMAGE / "build.prop").write_text(
            "# begin build properties\n"
            f"ro.build.version.sdk={self.sdk}\n"
            f"ro.build.version.release={RELEASES.get(self.sdk, self.sdk)}\n"
            f"ro.build.version.security_patch={SECURITY_PATCH}\n", encoding="utf-8")
        (IMAGE / "system.img").write_bytes(b"")

    def uninstall(self):
        shutil.rmtree(IMAGE)

    def command(self, hold=()):
        """The command line that the unit runs; services named in hold start hidden."""
        words = [self._program, "--device", DEVICE, "--sdk", self.sdk, "--data-root", DATA_ROOT,
                 "--image", IMAGE, "--record", RECORD, "--control", CONTROL]
        for name in hold:
            words += ["--hold", name]
        return [str(word) for word in words]

    # The control socket: one JSON object per line each way.

    def control(self, command, **arguments):
        """Sends one command and returns the answer; a refusal is raised as Refused."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(CONTROL_TIMEOUT_S)
            connection.connect(str(CONTROL))
            request = {"command": command, **arguments}
            connection.sendall(json.dumps(request).encode() + b"\n")
            with connection.makefile("rb") as answers:
                answer = json.loads(answers.readline() or b'{"ok": false, "error": "no answer"}')
        if not answer.get("ok"):
            raise Refused(f"{request}: {answer.get('error')}")
        return answer

    def apps(self):
        return self.control("apps")["apps"]

    def announce(self):
        """Announces every app and handler anew, then that this was all."""
        return self.control("announce")

    def call_launcher(self, code, data=b"", oneway=False, token=True):
        """Calls the daemon's "umbra.launcher" with raw data after the interface token; returns
        (status, reply bytes)."""
        answer = self.control("call", service="umbra.launcher", code=code, oneway=oneway,
                              data=data.hex(), token=token)
        return answer["status"], bytes.fromhex(answer.get("reply") or "")

    def call_observer(self, kind, code, data=b""):
        """Calls the object last handed over by the daemon; kind is "install", "delete" or
        "listener"."""
        return self.control("observer", kind=kind, code=code, data=data.hex())

    def flood(self, code, count, data=b"", service="umbra.launcher", objects=0, files=0,
              zeros=0):
        """Calls the daemon so many times one-way, as fast as the driver takes it, with so many
        zeros, objects and descriptors behind the data of each call; returns the status of the last
        call that failed."""
        return self.control("flood", service=service, code=code, count=count, data=data.hex(),
                            objects=objects, files=files, zeros=zeros)["status"]

    def mayflies(self, service, count):
        """Registers so many objects as this service, each of which dies when the next is there."""
        return self.control("mayflies", service=service, count=count)["status"]

    def fault(self, service, kind, code=None, value=None, count=None):
        """From now on the service misbehaves; sim/runtime/README.md lists the kinds."""
        extra = {"code": code, "value": value, "count": count}
        return self.control("fault", service=service, kind=kind,
                            **{key: item for key, item in extra.items() if item is not None})

    def hold(self, service):
        return self.control("hold", service=service)

    def release(self, service):
        return self.control("release", service=service)

    def restart(self):
        """The runtime comes up anew inside the same process, with the same data."""
        return self.control("restart")

    # The record of what it received.

    def transactions(self, service=None, code=None):
        """The transactions received since forget(), as dicts, oldest first."""
        if not RECORD.exists():
            return []
        text = RECORD.read_text(encoding="utf-8")
        lines = text[:text.rfind("\n") + 1].splitlines()
        records = [json.loads(line) for line in lines[self._forgotten:]]
        return [record for record in records
                if service in (None, record["service"]) and code in (None, record["code"])]

    def wait_for_transaction(self, service, code, count=1, timeout=10):
        """Waits until there are that many, and returns the last."""
        def enough():
            found = self.transactions(service, code)
            return found[count - 1] if len(found) >= count else None
        return wait_for(enough, f"transaction {code} of {service}", timeout)

    def forget(self):
        """Lets transactions() begin anew here."""
        self._forgotten = RECORD.read_bytes().count(b"\n") if RECORD.exists() else 0
