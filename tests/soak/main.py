"""The program behind tests/soak/run, inside the private root."""

import argparse
import secrets
import sys

from phone import waiting
from phone.phone import Phone

from conftest import trouble
from soak import Soak

# Machines that do other things besides are slow now and then.
SLOWNESS = 3


def main():
    parser = argparse.ArgumentParser(prog="tests/soak/run")
    parser.add_argument("rounds", nargs="?", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=secrets.randbelow(1 << 31))
    arguments = parser.parse_args()
    if arguments.rounds < 1:
        parser.error("less than one round says nothing")
    waiting.slowness = SLOWNESS
    sys.stdout.reconfigure(line_buffering=True)
    print(f"seed {arguments.seed}")
    try:
        with Phone() as phone:
            Soak(phone, arguments.seed).run(arguments.rounds)
    except AssertionError as error:
        print(error)
        print(f"soak: FAILED, seed {arguments.seed}")
        return 1
    except KeyboardInterrupt:
        print(f"soak: interrupted, seed {arguments.seed}")
        return 130
    complaints = trouble(phone)
    print("\n".join(complaints))
    print("soak: FAILED" if complaints else "soak: ok")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
