"""All that was written down so far, and the accounts of it."""
import time

from . import accounts
from .audit_file import AuditFile
from .deployment import CONSUMERS, FLUSH_INTERVAL_MS, OSSS, QUEUE_LENGTH
from .journals import (AgentWords, CallJournal, ConsumerJournal, Ledger, LineSource, OperationLog, ServiceWords)

# What the agent's flush may come late by on a machine that is busy with all hosts.
FLUSH_SLACK_MS = 400


def now_ms():
    return int(time.monotonic() * 1000)


class Books:
    def __init__(self, deployment):
        self._deployment = deployment
        self.ledger = Ledger()
        self.log = OperationLog()
        self.calls = {name: CallJournal() for name in OSSS}
        self.consumers = {name: ConsumerJournal() for name in CONSUMERS}
        self.service = ServiceWords()
        self.agent = AgentWords()
        self._audit = AuditFile(deployment.log_dir / "audit.db")
        run = deployment.work / "run"
        self._sources = [
            (LineSource(deployment.ledger), self.ledger),
            (LineSource(deployment.log_dir / "corbaoper.log"), self.log),
            (LineSource(run / "notify.err"), self.service),
            (LineSource(run / "agent.err"), self.agent),
            *((LineSource(deployment.journal(name)), reader) for name, reader in self.calls.items()),
            *((LineSource(deployment.journal(name)), reader) for name, reader in self.consumers.items())]

    def read(self):
        for source, reader in reversed(self._sources):
            for line in source.new_lines():
                reader.take(line)

    def all_calls(self):
        return [call for journal in self.calls.values() for call in journal.calls.values()]

    def _dead_osss(self):
        dead = set()
        for name in OSSS:
            for number, (_, _, ended) in enumerate(self._deployment.processes[name].lives, 1):
                if ended is not None:
                    dead.add(f"{name}.{number}")
        return dead

    def _agent_deaths(self):
        return [(pid, int(ended * 1000)) for pid, _, ended in self._deployment.processes["agent"].lives
                if ended is not None]

    def requests(self, until):
        gaps = [(ended - FLUSH_INTERVAL_MS - FLUSH_SLACK_MS, ended + 50) for _, ended in self._agent_deaths()]
        return accounts.account_requests(self.all_calls(), self.log, until=until, dead=self._dead_osss(),
                                         record_gaps=gaps, records_told=self.agent.records_lost)

    def audit(self, until):
        killed = {pid for pid, _ in self._agent_deaths()}
        return accounts.account_audit(self.all_calls(), self._audit.rows(), until=until, killed_processes=killed,
                                      rows_told=self.agent.rows_lost)

    def events(self, until):
        """One account for each consumer."""
        return [accounts.account_events(
            self.ledger, reader.arrivals, name=name, until=until, doubts=self.service.doubts.get(reader.proxy, 0),
            agent_kills=len(self._agent_deaths()), queue_length=QUEUE_LENGTH)
            for name, reader in self.consumers.items()]

    def problems(self, until_call, until_event):
        """All that doesn't balance of what began before."""
        self.read()
        found = self.requests(until_call).problems + self.audit(until_call).problems
        for account in self.events(until_event):
            found += account.problems
        if self.service.dropped:
            found.append(f"the notification service dropped events ({self.service.dropped} lines say so)")
        return found

    def totals(self):
        """Counts of everything so far, for the table."""
        requests = self.requests(now_ms() + 1).counts
        events = {"raised": len(self.ledger.events), "received": 0, "lost": 0, "twice": 0, "told": 0}
        for account in self.events(len(self.ledger.events)):
            for name in ("received", "twice"):
                events[name] += account.counts[name]
            events["told"] += account.counts["dropped, told"] + account.counts["doubts told"]
        return requests, events

    def served_since(self, begin, place):
        """Each OSS had an answer from the agent and one from the naming service to calls that began since, and each
        consumer got an event that was raised since."""
        self.read()
        for journal in self.calls.values():
            operations = {call.operation for call in journal.calls.values()
                          if call.begin >= begin and call.outcome == "ok"}
            if not operations >= {"setUserLabel", "resolve"}:
                return False
        younger = {event.id for event in self.ledger.events[place:]}
        return all(younger & set(reader.arrivals[-200:]) for reader in self.consumers.values())
