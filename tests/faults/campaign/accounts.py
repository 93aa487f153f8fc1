"""What has to balance, as functions of what the readers understood. Each returns counts and sentences about what is
wrong; no sentence means that all is well.

What is promised, and so what is checked, stands in ../README.md.
"""
from collections import Counter
from dataclasses import dataclass, field

TOKEN_OPERATIONS = ("setUserLabel", "setAttributeValue")
AUDITED_TOKEN_OPERATION = "setUserLabel"
SINGLE_CALL_LIMIT_MS = 11_000  # 8 s of the client's own limit, and what a busy machine adds
COMPOSITE_LIMIT_MS = 40_000  # a login or a look into the naming service takes several calls
COMPOSITE = ("getEmsSession", "raiseEvents", "resolve")
LONGEST_OPERATION_S = 15.0
MOST_NAMED = 5


@dataclass
class Account:
    counts: dict = field(default_factory=dict)
    problems: list = field(default_factory=list)

    def add(self, name, number=1):
        self.counts[name] = self.counts.get(name, 0) + number

    def blame(self, what, subjects):
        """One sentence for all subjects with the same fault."""
        subjects = list(subjects)
        if subjects:
            more = f" and {len(subjects) - MOST_NAMED} more" if len(subjects) > MOST_NAMED else ""
            self.problems.append(f"{what}: {', '.join(map(str, subjects[:MOST_NAMED]))}{more}")


def _touches(call, spans):
    """Whether the call was under way in one of the spans of time."""
    return any(call.begin <= end and begin <= call.end for begin, end in spans)


def _overlap(call, spans):
    return sum(max(0, min(call.end, end) - max(call.begin, begin)) for begin, end in spans)


def account_requests(calls, log, *, until, dead, record_gaps, full_spans, records_told, frozen):
    """`calls` are those of all OSSs; those that began at or after `until` may be under way still. `dead` are the
    incarnations (the token's beginning) of OSSs that were killed: the last call of each has no end. `record_gaps` are
    the times (ms) in which an answer may lack its records because the agent was killed before they were written out;
    `full_spans` those in which it may because the disk was full, as far as the agent told that records were lost:
    `records_told` of them. `frozen` are by user the times (ms) in which an OSS was stopped, which don't count."""
    account = Account()
    late, open_ones, unrecorded, excused = [], [], [], []
    for call in calls:
        if call.begin >= until:
            continue
        account.add("made")
        if call.outcome is None:
            if call.incarnation in dead:
                account.add("cut off")
            else:
                open_ones.append(f"{call.token} ({call.operation})")
            continue
        account.add("answered" if call.answered else "failed")
        limit = COMPOSITE_LIMIT_MS if call.operation in COMPOSITE else SINGLE_CALL_LIMIT_MS
        if call.end - call.begin - _overlap(call, frozen.get(call.user, [])) > limit:
            late.append(f"{call.token} ({call.operation}, {call.end - call.begin} ms)")
        if call.operation in TOKEN_OPERATIONS and call.outcome == "ok" and not _touches(call, record_gaps):
            missing = [kind for kind, seen in (("request", log.requests), ("reply", log.replies))
                       if call.token not in seen]
            if missing:
                (excused if _touches(call, full_spans) else unrecorded).append(f"{call.token} ({', '.join(missing)})")
    twice = [token for token, count in log.requests.items() if count > 1]
    replies_twice = [token for token, count in log.replies.items() if count > 1]
    account.counts["twice"] = len(twice)
    account.counts["lost"] = len(open_ones)
    account.counts["unrecorded"] = len(unrecorded) + len(excused)
    account.blame("no answer and no exception within the bound", open_ones)
    account.blame("an answer or exception came too late", late)
    account.blame("executed twice", twice)
    account.blame("replied to twice in the operation records", replies_twice)
    account.blame("answered, but without a record", unrecorded)
    if len(excused) > records_told:
        account.blame(f"answered while the disk was full, but without a record ({records_told} lost records told)",
                      excused)
    return account


@dataclass
class AuditRow:
    id: int
    process: int
    operation: str
    token: str
    ended: bool
    result: int
    open_for: float = 0.0  # seconds since it was first seen without its end


def account_audit(calls, rows, *, until, running, killed, full_spans, rows_told):
    """Each risky operation that returned has its row, with its end. An open row belongs to an operation under way or
    to an agent that was killed; `running` is the agent's process, if any, and `killed` those that were. In
    `full_spans` (ms) the disk was full: rows may be missing then, as many as `rows_told`, the number that the agent
    said were lost; a row that was begun and not ended counts as one, too."""
    account = Account()
    by_token = {}
    for row in rows:
        if row.token:
            by_token.setdefault(row.token, []).append(row)
    missing, unended, wrong, excused, known = [], [], [], [], set()
    for call in calls:
        if call.operation != AUDITED_TOKEN_OPERATION:
            continue
        known.add(call.token)
        if call.begin >= until or call.outcome != "ok":
            continue
        account.add("returned")
        own = by_token.get(call.token, [])
        if not own or not own[0].ended:
            known_gap = _touches(call, full_spans)
            (excused if known_gap else unended if own else missing).append(call.token)
        elif own[0].result != 0:
            wrong.append(call.token)
    still_open = [row for row in rows if not row.ended and row.process not in killed
                  and (row.process != running or row.open_for > LONGEST_OPERATION_S)]
    account.counts["rows"] = len(rows)
    account.counts["open"] = sum(not row.ended and row.process != running for row in rows)
    account.counts["lost"] = len(missing) + len(unended) + len(excused)
    account.counts["told"] = rows_told
    account.blame("two rows of one operation", [token for token, own in by_token.items() if len(own) > 1])
    account.blame("rows of operations that nobody asked for", [token for token in by_token if token not in known])
    account.blame("rows that say that the operation failed, which it did not", wrong)
    account.blame("returned, but without a row", missing)
    account.blame("returned, but its row has no end", unended)
    if len(excused) > rows_told:
        account.blame(f"returned while the disk was full, but without a whole row ({rows_told} lost rows told)",
                      excused)
    if len(still_open) > rows_told:
        account.blame("rows that stay open, though the agent was not killed",
                      [f"row {row.id} ({row.operation})" for row in still_open])
    return account


def _judge_missing(ledger, missing, arrived, queue_length):
    """Splits the held events that did not come into those whose loss is told and those whose loss is not. What nothing
    younger has overtaken may still come."""
    told, untold = [], []
    newest = max((ledger.by_id[event_id].place for event_id in arrived if event_id in ledger.by_id), default=0)
    by_outage = {}
    for event in missing:
        by_outage.setdefault(event.outage, []).append(event)
    for index, events in by_outage.items():
        outage = ledger.outages[index]
        kept = sum(1 for event in ledger.events if event.outage == index and event.id in arrived)
        # A heartbeat whose push failed may have taken a place, and so may the event that is being pushed.
        overflowed = kept >= queue_length - 2
        explained = outage.killed or (overflowed and outage.told)
        for event in events:
            (told if explained and event.place < newest else untold).append(event)
    return told, untold


def account_events(ledger, arrivals, *, name, until, doubts, agent_kills, queue_length):
    """The events of one consumer. `until` is the place in the ledger up to which all must have come, `doubts` how many
    events the service said may come twice, and `agent_kills` how often the agent died: each time in the middle of one
    push at most, which the ledger then lacks. A consumer's claim begins with the first event that it got."""
    account = Account()
    first = list(dict.fromkeys(arrivals))
    got = set(first)
    begin = next((ledger.by_id[event_id].place for event_id in first if event_id in ledger.by_id), 0)
    due = ledger.events[begin:until]
    lacking = [event for event in due if event.id not in got]
    lost = [event for event in lacking if not event.held]
    # Heartbeats are never kept.
    told, untold = _judge_missing(ledger, [e for e in lacking if e.held and not e.heartbeat], got, queue_length)
    unknown = [event_id for event_id in first if event_id not in ledger.by_id]
    order = [ledger.by_id[event_id].place for event_id in first if event_id in ledger.by_id]
    overtaken = [ledger.events[later].id for earlier, later in zip(order, order[1:]) if later < earlier]
    times = Counter(arrivals)
    repeated = [event_id for event_id in first if times[event_id] > 1]
    extra = len(arrivals) - len(first)
    by_agent = sum(times[event_id] - 1 for event_id in repeated if event_id in ledger.failed)
    account.counts = {"raised": len(due), "received": len(due) - len(lacking), "lost": len(lost) + len(untold),
                      "dropped, told": len(told), "twice": extra, "pushed again by the agent": by_agent,
                      "doubts told": doubts}
    account.blame(f"{name} lacks events that were sent", [f"{e.id} (number {e.number} of run {e.run})" for e in lost])
    account.blame(f"{name} lacks events that were held back, and nobody told that they were lost",
                  [f"{e.id} (number {e.number} of run {e.run})" for e in untold])
    account.blame(f"{name} got events behind later ones", overtaken)
    if extra - by_agent > doubts:
        account.blame(f"{name} got events twice, and the service told of {doubts}",
                      [i for i in repeated if i not in ledger.failed])
    if len(unknown) > agent_kills:
        account.blame(f"{name} got events that the agent has not noted", unknown)
    return account
