"""What happens to the runtime, step by step; requests come between the steps."""

import signal

from phone.runtime import Refused

# Calls of the daemon in which the runtime can go wrong.
CALLS = (("umbra", 2), ("package", 63), ("umbra", 1), ("activity", 6), ("umbra", 15),
         ("servicemanager", 2))


class Disturber:
    """Makes one runtime go wrong in the ways that a program of random choices picks."""

    def __init__(self, phone, random):
        self._phone = phone
        self._random = random
        self.is_stopped = False
        self.counts = {}
        self.chosen = None
        self._deck = []
        self._ways = {
            "killed": (self._kill, self._start),
            "killed twice": (self._kill, self._start, self._kill, self._start),
            "stopped and continued": (self._stop, self._continue),
            "killed while it was stopped": (self._stop, self._kill, self._start),
            "restarted through its unit": (self._stop_unit, self._start),
            "restarted through its unit while it was stopped":
                (self._stop, self._stop_unit, self._start),
            "restarted inside its unit": (self._restart_inside,),
            "killed in a call": (self._die_in_a_call, self._start),
            "late with an answer": (self._hang_in_a_call,),
            "left in peace": (),
        }

    def choose(self):
        """The steps of one disturbance. Each way comes up before any does again."""
        if not self._deck:
            self._deck = self._random.sample(list(self._ways), len(self._ways))
        self.chosen = way = self._deck.pop()
        self.counts[way] = self.counts.get(way, 0) + 1
        return self._ways[way]

    def count_anew(self):
        self.counts.clear()
        self._deck.clear()

    @property
    def restarts_inside(self):
        """Whether the runtime was to boot anew without an end of its unit."""
        return self.chosen == "restarted inside its unit"

    def end(self):
        """Nothing goes wrong any more. A unit that has failed starts again when it is asked to."""
        self._continue()
        for service in {service for service, _code in CALLS}:
            self.tell("fault", service=service, kind="none")

    def tell(self, command, **arguments):
        """Tells the runtime something, if it is there to listen."""
        if self.is_stopped:
            return
        try:
            self._phone.runtime.control(command, **arguments)
        except (OSError, Refused):
            pass  # it has just died, or does not listen yet

    def start_if_down(self):
        """As whoever watches over the unit does. Returns its state."""
        state = self._phone.unit.state()
        if state in ("inactive", "failed"):
            self._phone.unit.start()
        return state

    def _start(self):
        self.start_if_down()

    def _kill(self):
        self.is_stopped = False
        self._phone.unit.kill_runtime()

    def _stop(self):
        self.is_stopped = True
        self._phone.unit.kill_runtime(signal.SIGSTOP)

    def _continue(self):
        self.is_stopped = False
        self._phone.unit.kill_runtime(signal.SIGCONT)

    def _stop_unit(self):
        self.is_stopped = False  # systemd continues what it wants to end
        self._phone.unit.stop_unit()

    def _restart_inside(self):
        self.tell("restart")

    def _die_in_a_call(self):
        service, code = self._random.choice(CALLS)
        self.tell("fault", service=service, kind="die", code=code)

    def _hang_in_a_call(self):
        service, code = self._random.choice(CALLS)
        self.tell("fault", service=service, kind="hang", code=code,
                  value=self._random.randint(1, 200))
