"""One of the daemon's tasks (faultscenarios.py), which goes wrong again and again."""

import os
from errno import ENOSPC, EOPNOTSUPP, EROFS
from pathlib import PurePath

from daemonsteps import wait_until_announced, wait_until_connected
from faultscenarios import differences, files, torn
from watchedprocess import KILL, WatchedProcess

# Whether to try everything, which takes minutes.
ALL = bool(os.environ.get("BRAMD_ALL_FAULTS"))

SYNCHRONISING = ("fsync", "fdatasync")


class Fault:
    """What becomes of the calls of one run: answer(number, call) is an error number, KILL or None.
    `hits` are those calls that did not just happen."""

    def __init__(self, answer):
        self.answer = answer
        self.hits = []

    def __call__(self, number, call):
        answer = self.answer(number, call)
        if answer:
            self.hits.append(call)
        return answer


def no_fault():
    return Fault(lambda _number, _call: None)


def fail_once(number, error):
    """The call with this number fails, if it can with this error."""
    return Fault(lambda current, call:
                 error if current == number and error in call.errors else None)


def fail_from_now_on(number, error):
    """The disk is broken, full or read-only from this call on."""
    return Fault(lambda current, call:
                 error if current >= number and error in call.errors else None)


def kill(number):
    """The call with this number is not made any more."""
    return Fault(lambda current, _call: KILL if current == number else None)


def without_unnamed_files(fault):
    """The file system knows only files with names, so that those being written have one. That is
    none of the fault's hits."""
    def decide(number, call):
        unnamed = call.flags & os.O_TMPFILE == os.O_TMPFILE
        return fault(number, call) or (EOPNOTSUPP if unnamed else None)
    return decide


def _kind(call):
    return call.name, call.flags, PurePath(call.path).parent


class FaultTrial:
    """The calls of an undisturbed run, and what it is that others are compared with.

    `findings` are complaints about the daemon, `points` the number of trials: each has a fault that
    did strike.
    """

    def __init__(self, phone, scenario, file_system=lambda fault: fault):
        """file_system changes every fault, as without_unnamed_files()."""
        self._phone = phone
        self._file_system = file_system
        self._watched = WatchedProcess()
        self.findings = []
        self.points = 0
        phone.start_runtime()
        self._start_daemon()
        self._scenario = scenario(phone)
        self._scenario.prepare()
        self._before = files()
        self._run(no_fault())
        self._after = files()
        self._scenario.repair()
        assert not differences(files(), self._after)
        assert differences(self._before, self._after)

        # Some things are done the first time only.
        self._scenario.prepare()
        self._run(no_fault())
        self.calls = self._watched.calls

    def close(self):
        self._watched.close()

    def kinds(self):
        """The number of the first call of each kind in each directory."""
        first = {}
        for number, call in enumerate(self.calls):
            if PurePath(call.path).parent not in self._scenario.TRIED_ELSEWHERE:
                first.setdefault(_kind(call), number)
        return list(first.values())

    def changes(self):
        """The numbers of the calls that change something on the disk."""
        return [number for number, call in enumerate(self.calls) if ENOSPC in call.errors
                or EROFS in call.errors]

    def can_fail_from(self, number, error):
        """Whether this call or a later one can fail with this error."""
        return any(error in call.errors for call in self.calls[number:])

    def fail(self, number, error, fault=fail_once):
        """A call fails. The daemon lives on, says so unless it found another way, and the next
        announcement repairs what it could not do."""
        self._begin(number, os.strerror(error))
        since = self._phone.daemon.log.mark()
        self._try(fault(number, error))
        records = self._phone.daemon.log.records[since:]
        found = files()
        self._check("after it", torn(found, self._before, self._after))
        if not any(record.level in ("warning", "critical") for record in records):
            self._check("nothing was logged", differences(found, self._after)
                        + [f"{path} is not synchronised" for path in self._unsynchronised()])
        self._scenario.repair()
        self._check("after the repair", differences(files(), self._after))
        for record in self._phone.daemon.log.records:
            record.claimed = True
        assert self._phone.daemon.process.running, self._what

    def kill(self, number):
        """The daemon is killed before a call, and started again."""
        self._begin(number, "killed")
        daemon = self._phone.daemon
        daemon.process.end_expected = True
        self._try(kill(number))
        daemon.process.wait()
        self._check("after it", torn(files(), self._before, self._after))
        self._start_daemon()
        self._scenario.repair()
        self._check("after the repair", differences(files(), self._after))
        for record in [*daemon.log.records, *self._phone.daemon.log.records]:
            record.claimed = True

    def _start_daemon(self):
        self._phone.start_daemon(prefix=self._watched.prefix)
        wait_until_connected(self._phone)
        wait_until_announced(self._phone)

    def _begin(self, number, what):
        self._what = f"{number}, {self.calls[number]}, {what}"
        self._scenario.prepare()
        assert not differences(files(), self._before), self._what

    def _run(self, fault):
        self._watched.arm(self._file_system(fault))
        self._scenario.act()
        self._watched.disarm()

    def _try(self, fault):
        planned = next(call for number, call in enumerate(self.calls) if fault.answer(number, call))
        self._run(fault)
        calls = "\n".join(map(str, self._watched.calls))
        assert fault.hits, f"{self._what}: no such call was made; these were:\n{calls}"
        assert _kind(fault.hits[0]) == _kind(planned), f"{self._what}: it struck at {fault.hits[0]}"
        self.points += 1

    def _unsynchronised(self):
        """The files for which that failed; what has been synchronised once is on the disk."""
        calls = [call for call in self._watched.calls if call.name in SYNCHRONISING]
        failed = {id(call) for call in self._watched.faults}
        return ({call.path for call in calls if id(call) in failed}
                - {call.path for call in calls if id(call) not in failed})

    def _check(self, when, complaints):
        self.findings += [f"{self._what}; {when}: {complaint}" for complaint in complaints]
