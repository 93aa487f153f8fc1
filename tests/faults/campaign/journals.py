"""Readers of what the programs write down. Each takes the lines that are new and keeps what it has understood.

A reader never sees half a line: LineSource waits for the end of it.
"""
import re
from dataclasses import dataclass, field
from pathlib import Path


class LineSource:
    """The lines of a file that were not read yet."""

    def __init__(self, path):
        self._path = Path(path)
        self._offset = 0

    def new_lines(self):
        if not self._path.exists():
            return []
        with open(self._path, "rb") as file:
            file.seek(self._offset)
            data = file.read()
        whole = data[:data.rfind(b"\n") + 1]
        self._offset += len(whole)
        return whole.decode("utf-8", "replace").splitlines()


@dataclass
class Call:
    token: str
    operation: str
    begin: int  # milliseconds of the monotonic clock
    end: int = None
    outcome: str = None

    @property
    def answered(self):
        """An exception of the EMS's own is an answer."""
        return self.outcome is not None and not self.outcome.startswith("system:")

    @property
    def user(self):
        return self.token.split(".")[0]

    @property
    def incarnation(self):
        return self.token.rsplit(".", 1)[0]


class CallJournal:
    """What an OSS of the load wrote: begin, end, and what the EMS told of losses."""

    def __init__(self):
        self.calls = {}
        self.losses_told = 0

    def take(self, line):
        words = line.split()
        if len(words) == 4 and words[0] == "begin":
            self.calls[words[1]] = Call(words[1], words[2], int(words[3]))
        elif len(words) == 5 and words[0] == "end" and words[1] in self.calls:
            call = self.calls[words[1]]
            call.outcome, call.end = words[3], int(words[4])
        elif words[:2] == ["told", "loss"]:
            self.losses_told += 1


TOKEN = re.compile(r"\boss\d+\.\d+\.\d+\b")
_HEAD = re.compile(r"---MessageType:  ([A-Z ]+)")
_OPERATION = re.compile(r"--- Request ID = (\d+), Operation Name = (\w+)")


@dataclass
class Record:
    kind: str
    operation: str = ""
    token: str = ""


class OperationLog:
    """corbaoper.log: the records by the token that their parameters hold."""

    def __init__(self):
        self.requests = {}
        self.replies = {}
        self._record = None

    def take(self, line):
        head = _HEAD.search(line)
        if head:
            self._record = Record(head.group(1).strip())
            return
        if self._record is None:
            return
        operation = _OPERATION.search(line)
        if operation:
            self._record.operation = operation.group(2)
        token = TOKEN.search(line)
        if token and not self._record.token:
            self._record.token = token.group(0)
            kind = self.requests if self._record.kind == "REQUEST" else self.replies
            kind[self._record.token] = kind.get(self._record.token, 0) + 1


@dataclass
class Event:
    place: int
    run: int  # of the agent's process
    number: int
    id: str
    type: str
    held: bool
    outage: int = None  # index in Ledger.outages

    @property
    def heartbeat(self):
        return self.type == "NT_HEARTBEAT"


@dataclass
class Outage:
    told: bool = False  # by EventLossOccurred
    cleared: bool = False
    killed: bool = False  # the agent was, before it was over


@dataclass
class Ledger:
    """events.csv of the demo agent, over all its processes; the campaign adds a line "restart" before each of them."""
    events: list = field(default_factory=list)
    by_id: dict = field(default_factory=dict)
    failed: set = field(default_factory=set)  # ids of pushes that failed
    outages: list = field(default_factory=list)
    runs: int = 0
    _outage: int = None

    def take(self, line):
        kind, *fields = line.split(",")
        if kind == "event" and len(fields) == 6:
            self._take_event(fields)
        elif kind == "loss" and len(fields) == 2:
            self.failed.add(fields[1])
            self._open().told = True
        elif kind == "cleared":
            self._open().cleared = True
            self._outage = None
        elif kind == "restart":
            self.new_run()

    def new_run(self):
        """Another process of the agent begins. What the one before had buffered is gone."""
        if self._outage is not None:
            self.outages[self._outage].killed = True
        self._outage = None
        self.runs += 1

    def _open(self):
        if self._outage is None:
            self.outages.append(Outage())
            self._outage = len(self.outages) - 1
        return self.outages[self._outage]

    def _take_event(self, fields):
        event = Event(len(self.events), self.runs, int(fields[0]), fields[1], fields[2], fields[5] == "held")
        if event.held:
            self._open()
            event.outage = self._outage
        self.events.append(event)
        self.by_id[event.id] = event


class ConsumerJournal:
    """The ids of the events as they came."""

    def __init__(self):
        self.arrivals = []
        self.proxy = None

    def take(self, line):
        words = line.split()
        if len(words) == 5 and words[0] == "event":
            self.arrivals.append(words[2])
        elif len(words) == 3 and words[0] == "subscribed":
            self.proxy = int(words[1])


class ServiceWords:
    """What the notification service told its operator of consumers in doubt and of what it dropped."""
    _DOUBT = re.compile(r"/ca\d+/p(\d+) may get (event \d+|one event) twice")
    _LEFT_OUT = re.compile(r"\((\d+) lines about \S*/ca\d+/p(\d+) in doubt were left out\)")

    def __init__(self):
        self.doubts = {}
        self.dropped = 0

    def take(self, line):
        for proxy in self._DOUBT.findall(line):
            self._count(int(proxy[0]), 1)
        for count, proxy in self._LEFT_OUT.findall(line):
            self._count(int(proxy), int(count))
        if "was dropped" in line:
            self.dropped += 1

    def _count(self, proxy, count):
        self.doubts[proxy] = self.doubts.get(proxy, 0) + count


class AgentWords:
    """What the agent told its operator of records and rows that it could not write."""
    _RECORDS = re.compile(r"writes to \S*corbaoper\.log again; up to (\d+) records were lost")
    _ROWS = re.compile(r"is written again; (\d+) row\(s\) were lost")

    def __init__(self):
        self.records_lost = 0
        self.rows_lost = 0

    def take(self, line):
        for count in self._RECORDS.findall(line):
            self.records_lost += int(count)
        for count in self._ROWS.findall(line):
            self.rows_lost += int(count)
