"""All that was written down so far, and the accounts of it."""
import time

from . import accounts
from .audit_file import AuditFile
from .deployment import CONSUMERS, FLUSH_INTERVAL_MS, OSSS, QUEUE_LENGTH
from .journals import (AgentWords, CallJournal, ConsumerJournal, Ledger, LineSource, OperationLog, ServiceWords)

# What the agent's flush may come late by on a machine that is busy with all hosts.
FLUSH_SLACK_MS = 400
# The agent tries once a second whether there is room again.
ROOM_AGAIN_MS = 1500


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
        # What is written down later, or by who knows more, is read later: nobody is blamed for lines not read yet.
        self._sources = [
            (LineSource(deployment.log_dir / "corbaoper.log"), self.log),
            *((LineSource(deployment.journal(name)), reader) for name, reader in self.consumers.items()),
            (LineSource(deployment.ledger), self.ledger),
            (LineSource(run / "notify.err"), self.service),
            (LineSource(run / "agent.err"), self.agent),
            *((LineSource(deployment.journal(name)), reader) for name, reader in self.calls.items())]
        self._rows = []

    def read(self):
        self._rows = self._audit.rows()
        for source, reader in self._sources:
            for line in source.new_lines():
                reader.take(line)

    def all_calls(self):
        return [call for journal in self.calls.values() for call in journal.calls.values()]

    def _dead_osss(self):
        dead = set()
        for name in OSSS:
            for number, life in enumerate(self._deployment.processes[name].lives, 1):
                if life.ended is not None:
                    dead.add(f"{name}.{number}")
        return dead

    def _agent_deaths(self):
        return [life for life in self._deployment.processes["agent"].lives if life.killed]

    def _full_spans(self):
        return [(int(begin * 1000) - FLUSH_INTERVAL_MS - FLUSH_SLACK_MS,
                 now_ms() if end is None else int(end * 1000) + ROOM_AGAIN_MS)
                for begin, end in self._deployment.network.hosts["ems"].full_spans]

    def _frozen(self):
        return {name: [(int(begin * 1000), now_ms() if end is None else int(end * 1000))
                       for begin, end in self._deployment.processes[name].frozen_spans] for name in OSSS}

    def requests(self, until):
        deaths = [int(life.ended * 1000) for life in self._agent_deaths()]
        gaps = [(death - FLUSH_INTERVAL_MS - FLUSH_SLACK_MS, death + 50) for death in deaths]
        return accounts.account_requests(self.all_calls(), self.log, until=until, dead=self._dead_osss(),
                                         record_gaps=gaps, full_spans=self._full_spans(),
                                         records_told=self.agent.records_lost, frozen=self._frozen())

    def audit(self, until):
        agent = self._deployment.processes["agent"]
        return accounts.account_audit(self.all_calls(), self._rows, until=until,
                                      running=agent.pid if agent.running() else None,
                                      killed={life.pid for life in self._agent_deaths()},
                                      full_spans=self._full_spans(), rows_told=self.agent.rows_lost)

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

    def totals(self, until_call, until_event):
        """Counts of what began before, for the table."""
        requests = self.requests(until_call).counts
        requests["unrecorded, told"] = self.agent.records_lost
        audit = self.audit(until_call).counts
        events = {"raised": until_event, "received": 0, "lost": 0, "twice": 0, "told": 0}
        for account in self.events(until_event):
            for name in ("received", "lost", "twice"):
                events[name] += account.counts[name]
            events["told"] += account.counts["dropped, told"] + account.counts["doubts told"]
        return requests, events, audit

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
