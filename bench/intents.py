"""What it takes to make the bytes of an intent, and to read them."""

import subprocess

from phone.runtime import IMAGE

from rounds import cost, in_turns, program

INTENTS = 20000


def measure(table, rounds):
    # The layout depends on the runtime's release.
    IMAGE.mkdir(parents=True, exist_ok=True)
    (IMAGE / "build.prop").write_text("ro.build.version.sdk=28\n", encoding="ascii")
    if printed("ours_intent") != printed("floor_intent"):
        raise AssertionError("the floor encodes an intent in another way than the daemon")

    taken = in_turns(rounds, {
        (name, work): lambda name=name, work=work: cost(name, work, INTENTS)
        for work in ("encode", "decode") for name in ("ours_intent", "floor_intent")})
    for work, target in (("encode", 1.4), ("decode", 1.5)):
        table.add(f"intent, {work}d", taken["ours_intent", work]["cpu"], "us", target,
                  floor_name="by hand", floor=taken["floor_intent", work]["cpu"])


def printed(name):
    return subprocess.run([program(name), "print", "1"], check=True,
                          stdout=subprocess.PIPE).stdout
