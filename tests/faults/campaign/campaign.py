"""One campaign: start everything, play faults until the time is over, end everything, and say what came of it."""
import random
import re
import shutil
import sys
import time

from . import faults, leaks, report
from .books import Books, now_ms
from .deployment import Deployment
from .hosts import Network
from .secrets_check import find_secrets

SETTLE_LIMIT = 40.0
LONG_SETTLING = 3.0
POLL = 0.25
WATCHED = ("naming", "notify", "agent", "oss1", "oss2", "consumer1", "consumer2")


class Abandoned(Exception):
    """It makes no sense to go on."""


def _gist(sentence):
    """What is wrong, without names and numbers of what it concerns."""
    return re.sub(r"\d+", "", sentence.split(":")[0])


class Campaign:
    def __init__(self, settings):
        self.settings = settings
        self.lines = {}
        self.failures = []  # (seconds, what was going on, sentence)
        self.played = 0
        self.network = None
        self.deployment = None
        self.books = None
        self._begin = time.monotonic()
        self._bases = {}  # of (name, incarnation)
        self._growth = {}  # the first and the last sample of each process
        self._known = set()  # what was off before, as it stays off
        self._before = None
        self.packets = {}

    def say(self, text):
        print(f"{time.monotonic() - self._begin:7.1f} s  {text}", flush=True)

    def run(self):
        """Raises nothing that comes from what is tested; `failures` has it."""
        try:
            self._start()
            self._play()
            self._end()
        except Abandoned:
            pass
        except RuntimeError as error:
            self._fail("the campaign", [str(error)])
        except KeyboardInterrupt:
            self._fail("the campaign", ["it was interrupted"])
        finally:
            self._clean_up()

    def _start(self):
        work = self.settings.work
        self.say("hosts, switch and disks are made")
        self.network = Network(self.settings.build / "bin" / "qv_fault_switch", work, self.settings.seed,
                               48 + 6 * int(self.settings.minutes))
        self.deployment = Deployment(self.settings.build, self.settings.source, work, self.network)
        self.books = Books(self.deployment)
        self.say("services, agent, OSSs and consumers start")
        self.deployment.start_all()
        if self._wait_served(now_ms(), 0, 60) is None:
            self._fail("the start", ["not all OSSs and consumers were served within 60 s"])
            raise Abandoned
        time.sleep(3)
        self._settle("the start", report.Line("the start"))

    def _fail(self, during, sentences):
        for sentence in sentences:
            self.failures.append((time.monotonic() - self._begin, during, sentence))
            self._known.add(_gist(sentence))
            self.say(f"FAILED, {during}: {sentence}")

    def _new_problems(self, until_call, until_event):
        return [problem for problem in self.books.problems(until_call, until_event)
                if _gist(problem) not in self._known]

    def _play(self):
        kinds = [kind for kind in faults.KINDS
                 if not self.settings.only or any(word in kind.name for word in self.settings.only)]
        plan = faults.schedule(random.Random(self.settings.seed), kinds)
        end = time.monotonic() + self.settings.minutes * 60
        while time.monotonic() < end:
            self._play_one(next(plan))
            if self.failures and not self.settings.keep_going:
                raise Abandoned

    def _play_one(self, fault):
        line = self.lines.setdefault(fault.kind.name, report.Line(fault.kind.name, fault.kind.recovery))
        self.played += 1
        self.say(f"{self.played}. {fault.describe()}")
        fault.begin(self.deployment)
        time.sleep(fault.parameters["hold"])
        place = len(self.books.ledger.events)
        begin = time.monotonic()
        fault.end(self.deployment)
        self.books.read()
        place = max(place, len(self.books.ledger.events))
        recovery = self._wait_served(int(begin * 1000), place, max(60.0, 2 * fault.kind.recovery))
        self._judge_recovery(fault, line, begin, recovery)
        if recovery is not None:
            self._settle(fault.describe(), line)

    def _judge_recovery(self, fault, line, begin, recovery):
        if recovery is None:
            line.problems.append("no recovery")
            self._fail(fault.describe(), [f"not all was served again within {time.monotonic() - begin:.0f} s"])
            self._close_line(line, now_ms(), len(self.books.ledger.events))
            raise Abandoned
        taken = recovery - begin
        line.recoveries.append(taken)
        if taken > fault.kind.recovery:
            line.problems.append("slow recovery")
            self._fail(fault.describe(), [f"recovery took {taken:.1f} s; {fault.kind.recovery:.0f} s are stated"])

    def _wait_served(self, begin_ms, place, limit):
        """When all were served again; None when that didn't come about in time."""
        end = time.monotonic() + limit
        while not self.books.served_since(begin_ms, place):
            self._check_alive()
            if time.monotonic() > end:
                return None
            time.sleep(POLL)
        return time.monotonic()

    def _check_alive(self):
        for name, process in self.deployment.processes.items():
            if not process.running():
                self._fail("between faults", [f"{name} has ended by itself with {process.end()}; see {process.err}"])
                raise Abandoned

    def _settle(self, during, line):
        """What began until now has to balance within a time."""
        until_call, until_event = now_ms(), len(self.books.ledger.events)
        begin, waited_for = time.monotonic(), []
        while True:
            problems = self._new_problems(until_call, until_event) + self._leaks()
            if not problems or time.monotonic() > begin + SETTLE_LIMIT:
                break
            waited_for = problems
            time.sleep(2 * POLL)
        if not problems and time.monotonic() > begin + LONG_SETTLING:
            self.say(f"   balanced after {time.monotonic() - begin:.1f} s; the last to come right: {waited_for[0]}")
        line.problems += problems
        self._fail(during, problems)
        self._close_line(line, until_call, until_event)

    def _leaks(self):
        problems = []
        for name in WATCHED:
            process = self.deployment.processes[name]
            sample = process.sample()
            base = self._bases.setdefault((name, process.incarnation), sample)
            self._growth[name] = {"first": base, "last": sample}
            problems += leaks.judge(name, base, sample)
        return problems

    def _close_line(self, line, until_call, until_event):
        """What came since the line before was closed belongs to this one."""
        after = self.books.totals(until_call, until_event)
        before = self._before or ({}, {}, {})
        line.add(*({name: now[name] - then.get(name, 0) for name in now} for now, then in zip(after, before)))
        self._before = after

    def _end(self):
        self.say("the load ends, and everything in order")
        line = self.lines.setdefault("end in order", report.Line("end in order"))
        for name in ("oss1", "oss2"):
            self.deployment.processes[name].end()
        # The agent raises on until it is told to stop; the consumers get the last of it.
        codes = {"agent": self.deployment.processes["agent"].end(60)}
        self._wait_last_events(line)
        codes.update(self.deployment.end_all())
        problems = [f"{name} ended with {code}" for name, code in codes.items() if code != 0]
        problems += self._secrets()
        line.problems += problems
        self._fail("the end", problems)
        self._close_line(line, now_ms(), len(self.books.ledger.events))

    def _wait_last_events(self, line):
        end = time.monotonic() + SETTLE_LIMIT
        while True:
            problems = self._new_problems(now_ms(), len(self.books.ledger.events))
            if not problems or time.monotonic() > end:
                break
            time.sleep(POLL)
        line.problems += problems
        self._fail("the end", problems)

    def _secrets(self):
        passwords = [word for both in self.deployment.passwords for word in both]
        exempt = list((self.settings.work / "secrets").iterdir())
        return [f"a password stands in {path}" for path in find_secrets(self.settings.work, passwords, exempt)]

    def _clean_up(self):
        if self.deployment is not None:
            self.deployment.kill_all()
        if self.network is not None:
            self.packets = self.network.counts()
            for host in self.network.hosts.values():
                host.release_disk()
                kept = self.settings.work / host.name / "kept"
                shutil.copytree(host.disk, kept, symlinks=True, dirs_exist_ok=True)
            self.network.close()

    def _losses_told(self):
        return sum(journal.losses_told for journal in self.books.calls.values()) if self.books else 0

    def report(self):
        """Prints the table; True when everything balances."""
        lines = list(self.lines.values())
        summary = {"seed": self.settings.seed, "minutes": self.settings.minutes, "faults_played": self.played,
                   "packets": self.packets,
                   "losses_told_to_osss": self._losses_told(), "processes": self._growth, "balances": not self.failures,
                   "failures": [{"at_s": round(at, 1), "during": during, "what": what}
                                for at, during, what in self.failures]}
        report.write_json(self.settings.work / "report.json", summary, lines)
        print("\n" + report.table(lines))
        print(f"\nseed {self.settings.seed}, {self.played} faults, packets: " +
              ", ".join(f"{name} {number}" for name, number in self.packets.items()))
        if not self.failures:
            print(f"everything balances; {self.settings.work}/report.json has it for programs")
            return True
        for at, during, what in self.failures:
            print(f"after {at:.0f} s, {during}: {what}", file=sys.stderr)
        work = self.settings.work
        print(f"look at {work}/run/*.err and *.journal, {work}/events.csv, and the disks of the hosts in "
              f"{work}/*/kept; --seed {self.settings.seed} plays the same faults again", file=sys.stderr)
        return False
