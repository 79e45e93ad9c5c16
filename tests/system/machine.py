"""The virtual machine: one run of qemu on a disk that it leaves as it was."""

import os
import selectors
import signal
import subprocess
import time
from pathlib import Path

MEMORY_MB = 1024
PROCESSORS = 2
# Drivers of what the machine has and nobody uses.
NEEDLESS = "ata_piix,ata_generic,psmouse,i2c_piix4,pcspkr,floppy,serio_raw,button,evdev"


class Machine:
    """Boots an Image. What the guest writes to its port "results" can be read as lines; its journal
    and its serial console are files in `logs`. Use it as a context manager: no qemu stays behind,
    even when this process is killed."""

    def __init__(self, image, logs, kvm=False):
        self.journal = Path(logs) / "journal.log"
        self.console = Path(logs) / "console.log"
        self.console_socket = Path(logs) / "console.socket"
        self.console_socket.unlink(missing_ok=True)
        accelerator = ["-accel", "kvm", "-cpu", "host"] if kvm else \
            ["-accel", "tcg,thread=multi", "-cpu", "qemu64"]
        command = [
            "setpriv", "--pdeathsig", "KILL", "qemu-system-x86_64",
            *accelerator, "-smp", str(PROCESSORS), "-m", str(MEMORY_MB),
            "-nodefaults", "-no-user-config", "-no-reboot", "-display", "none", "-vga", "none",
            "-kernel", image.kernel, "-initrd", image.initrd,
            "-append", "root=/dev/vda rw console=ttyS0 panic=-1 quiet mitigations=off init_on_alloc=0"
                       f" module_blacklist={NEEDLESS}",
            "-drive", f"file={image.disk},format=raw,if=virtio,snapshot=on,cache=unsafe",
            "-device", "virtio-rng-pci", "-device", "virtio-serial-pci",
            "-chardev", f"socket,id=console,path={self.console_socket},server=on,wait=off,"
                        f"logfile={self.console}",
            "-serial", "chardev:console",
            *_port("results", "stdio", "signal=off"),
            *_port("journal", "file", f"path={self.journal}"),
        ]
        self._process = subprocess.Popen(  # pylint: disable=consider-using-with
            [os.fspath(word) for word in command], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, start_new_session=True, bufsize=0)

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.stop()

    def tell(self, line):
        """Sends one line to the guest's port "results". If qemu has ended already, lines() has what it
        said."""
        try:
            self._process.stdin.write(line.encode() + b"\n")
        except BrokenPipeError:
            pass

    def lines(self, deadline):
        """What the guest writes there, line by line, until it powers off. Raises TimeoutError at
        the deadline (of time.monotonic())."""
        output = self._process.stdout.fileno()
        rest = b""
        with selectors.DefaultSelector() as selector:
            selector.register(output, selectors.EVENT_READ)
            while True:
                if not selector.select(max(0, deadline - time.monotonic())):
                    raise TimeoutError
                data = os.read(output, 65536)
                if not data:
                    break
                *complete, rest = (rest + data).split(b"\n")
                for line in complete:
                    yield line.decode("utf-8", "replace").rstrip("\r")
        if rest:
            yield rest.decode("utf-8", "replace")

    def stop(self):
        if self._process.poll() is None:
            self._process.send_signal(signal.SIGKILL)
        self._process.wait()


def _port(name, kind, *options):
    return ["-chardev", ",".join([kind, f"id={name}", *options]),
            "-device", f"virtserialport,chardev={name},name={name}"]
