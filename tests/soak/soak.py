"""The daemon beside a runtime that is killed, stopped and restarted, round after round."""

import os
import random
import re
import shutil
import time

from phone.daemon import SERVICE
from phone.runtime import Refused
from phone.waiting import deliver_signals, wait_for

from daemonsteps import claim_missing_settings_entries, start_beside_runtime
from delivery import Deliveries, install, intent, launch, removal
from disturbances import Disturber
from footprint import Footprint
from hostfiles import APKS, APPLICATIONS, DOWNLOADS, INCOMING, read_entry

APPS = {"papertrail": "org.example.papertrail", "weather": "org.example.weather",
        "starmap": "org.example.starmap"}

# What is freed is free: the address sanitizer keeps it back for a while, to find who uses it still.
ENVIRONMENT = {"ASAN_OPTIONS": ":".join(filter(None, [
    os.environ.get("ASAN_OPTIONS"), "quarantine_size_mb=0", "thread_local_quarantine_size_kb=0"]))}

# So many rounds before the first figures are taken: the daemon has then done everything once.
WARMING_ROUNDS = 3

# A call that the daemon has no name for, and its answer.
UNKNOWN_CALL, NOT_HANDLED = 99, 1

# From so many rounds on the second half is looked at by itself, in which smaller leaks show: what
# has to settle has done so in the first.
LONG_RUN = 200

LONGEST_PAUSE_S = 0.02
SECONDS_PER_ROUND = 20

# What the daemon says of a runtime that dies, and of one whose apps go.
EXPECTED = ((re.compile(r"\S+ died! Trying to reconnect\."), "warning"),
            ("Failed to set listener for umbra service", "critical"))


class Soak:
    """One run. The same seed makes the same choices; when each thing meets the daemon is up to the
    machine."""

    def __init__(self, phone, seed, tell=print):
        self._phone = phone
        self._tell = tell
        self._random = random.Random(seed)
        self._disturber = Disturber(phone, self._random)
        self._footprint = Footprint(phone)
        self._deliveries = None
        self._answers = []
        self._last_number = 0
        self._requests = {}
        self._lost = 0

    def run(self, rounds):
        """Makes so many rounds, after a few to warm up, and checks all; any trouble is raised."""
        deadline = time.monotonic() + 60 + SECONDS_PER_ROUND * rounds
        start_beside_runtime(self._phone, ENVIRONMENT)
        self._deliveries = Deliveries(self._phone.daemon.log)
        for number in range(1 - WARMING_ROUNDS, rounds + 1):
            assert time.monotonic() < deadline, f"no time is left in round {number} of {rounds}"
            try:
                self._round()
            except AssertionError as error:
                log = self._phone.daemon.log.tail(count=150)
                raise AssertionError(f"logged was:\n{log}\nround {number}, in which the runtime "
                                     f"was {self._disturber.chosen}: {error}") from error
            if number == 0:
                self._start_counting()
            elif number > 0:
                self._footprint.look()
            if rounds >= LONG_RUN and number == rounds // 2:
                self._restart()
                self._footprint.halve()
            if number > 0 and number % 50 == 0:
                self._tell(f"round {number} of {rounds}")
        self._restart()
        self._footprint.end()
        self._claim_expected()
        self._tell(self.report(rounds))
        excesses = self._footprint.excesses()
        assert not excesses, "\n".join(excesses)

    def report(self, rounds):
        ways = "\n".join(f"{count:9} × {way}"
                         for way, count in sorted(self._disturber.counts.items()))
        requests = ", ".join(f"{count} {queue}" for queue, count in sorted(self._requests.items()))
        return (f"{rounds} rounds, in which the runtime was\n{ways}\n"
                f"requests accepted and handed over: {requests}, of which {self._lost} went down "
                f"with the runtime and {self._deliveries.kept} were kept for the next\n"
                f"{self._footprint.table()}")

    def _start_counting(self):
        self._restart()
        self._footprint.begin()
        self._disturber.count_anew()
        self._requests.clear()
        self._lost = self._deliveries.kept = 0

    def _restart(self):
        """A runtime that has just started holds of the daemon only what each has to hold."""
        self._deliveries.begin()
        self._phone.stop_runtime()
        self._settle()
        self._check_host()

    def _round(self):
        self._deliveries.begin()
        steps = [self._random.choice((self._install, self._install_anew, self._remove,
                                      self._remove_app, self._launch, self._start_intent,
                                      self._announce, self._close_app))
                 for _ in range(self._random.randint(4, 12))]
        position = 0
        for step in self._disturber.choose():
            position = self._random.randint(position, len(steps))
            steps.insert(position, step)
            position += 1
        for step in steps:
            step()
            # Where the daemon is by the next step is to be different each time.
            time.sleep(self._random.uniform(0, LONGEST_PAUSE_S))
            deliver_signals()
        self._settle()
        lost = self._deliveries.check()
        self._lost += len(lost)
        for request in self._deliveries.accepted:
            self._requests[request.queue] = self._requests.get(request.queue, 0) + 1
        if self._disturber.restarts_inside:
            self._check_that_apps_have_entries()
            self._restart()
        else:
            self._check_host()
        self._tidy()

    def _settle(self):
        """Until the runtime is there again, and the daemon has nothing left to do."""
        self._disturber.end()

        def settled():
            if self._disturber.start_if_down() != "active" or not self._is_found_by_runtime():
                return False
            # Calls into the runtime block the daemon: when it answers, the last of them is over.
            self._phone.bramd.call("getAndroidVersionData")
            answered = all(self._answers)
            return answered and self._deliveries.is_connected and not self._deliveries.waiting()
        wait_for(settled, self._unsettled, 60)
        for answer in self._answers:
            assert answer[0] in (True, None), f"a request was answered with {answer[0]}"
        self._answers.clear()

    def _is_found_by_runtime(self):
        """Whether the runtime that is there now reaches the daemon, which then has left behind
        those that were there before."""
        try:
            status, _reply = self._phone.runtime.call_launcher(UNKNOWN_CALL)
        except (OSError, Refused):
            return False
        return status == NOT_HANDLED

    def _unsettled(self):
        handed = self._deliveries.handed
        missing = [request for request in self._deliveries.accepted if request not in handed]
        return (f"the end of a round: the unit is {self._phone.unit.state()}, "
                f"{sum(not answer for answer in self._answers)} calls are not answered, "
                f"not handed over are {missing}")

    def _check_host(self):
        """The host has entries of just those apps that the runtime has."""
        wait_for(lambda: _packages_on_host() == self._apps(), self._entries_and_apps, 30)

    def _check_that_apps_have_entries(self):
        wait_for(lambda: _packages_on_host() >= self._apps(), self._entries_and_apps, 30)

    def _apps(self):
        return {app["package"] for app in self._phone.runtime.apps()}

    def _entries_and_apps(self):
        return f"the entries of {self._apps()}; there are those of {_packages_on_host()}"

    def _tidy(self):
        for path in (*DOWNLOADS.glob("soak*.apk"), *INCOMING.iterdir()):
            path.unlink()
        self._phone.notifications.forget()
        self._phone.unit.forget()

    def _claim_expected(self):
        for text, level in EXPECTED:
            self._phone.daemon.log.claim_all(text, level)
        claim_missing_settings_entries(self._phone)

    # Requests: the daemon is asked, and its answer is awaited at the end of the round.

    def _ask(self, request, method, signature, *arguments):
        self._answers.append(self._phone.bramd.start_call(method, signature, *arguments))
        self._deliveries.accepted.append(request)

    def _number(self):
        self._last_number += 1
        return self._last_number

    def _install(self):
        app = self._random.choice(list(APPS))
        path = DOWNLOADS / f"soak{self._number()}.apk"
        shutil.copyfile(APKS / f"{app}.apk", path)
        self._ask(install(path), "installFile", "s", str(path))

    def _install_anew(self):
        """What is no app is refused by the runtime, which is its answer to the request."""
        path = DOWNLOADS / f"soak{self._number()}.apk"
        path.write_bytes(b"no app")
        self._ask(install(path), "installFile", "s", str(path))

    def _remove(self):
        package = f"org.example.soak{self._number()}"
        self._ask(removal(package), "removeFile", "s", package)

    def _remove_app(self):
        package = self._random.choice(list(APPS.values()))
        if removal(package) not in self._deliveries.accepted:
            self._ask(removal(package), "removeFile", "s", package)

    def _launch(self):
        package = f"org.example.soak{self._number()}"
        self._ask(launch(package), "launchApp", "s", package)

    def _start_intent(self):
        action = f"{SERVICE}.soak.{self._number()}"
        self._ask(intent(action), "launchIntent", "ssssssa{sv}", action, "", "", "", "", "", {})

    # What comes from the runtime.

    def _announce(self):
        self._disturber.tell("announce")

    def _close_app(self):
        self._disturber.tell("close", package=self._random.choice(list(APPS.values())))


def _packages_on_host():
    packages = set()
    for path in APPLICATIONS.glob("bramd_*"):
        try:
            packages.add(read_entry(path)["X-bramd-packageName"])
        except FileNotFoundError:
            pass  # it is being removed
    return packages
