"""The console of a machine on this terminal."""

import os
import selectors
import socket
import sys
import termios
import tty

LEAVE = b"\x1d"  # Ctrl-]


def connect(path):
    """Until the machine ends or Ctrl-] is pressed."""
    keyboard, screen = sys.stdin.fileno(), sys.stdout.fileno()
    before = termios.tcgetattr(keyboard)
    with socket.socket(socket.AF_UNIX) as console, selectors.DefaultSelector() as selector:
        console.connect(str(path))
        console.sendall(b"\n")
        selector.register(console, selectors.EVENT_READ)
        selector.register(keyboard, selectors.EVENT_READ)
        tty.setraw(keyboard)
        try:
            while True:
                ready = [key.fileobj for key, _events in selector.select()]
                if console in ready:
                    data = console.recv(4096)
                    if not data:
                        return
                    os.write(screen, data)
                if keyboard in ready:
                    data = os.read(keyboard, 4096)
                    if not data or LEAVE in data:
                        return
                    console.sendall(data)
        finally:
            termios.tcsetattr(keyboard, termios.TCSADRAIN, before)
