#!/usr/bin/env python3
"""Says what became of every event that the demo agent raised, and fails when an event isn't accounted for.

It reads the agent's ledger (events.csv) and traces (corbasys.log), what the notification service said, and what OSSs
printed. For each OSS a selection says which events its filter lets through: FIELD=VALUE|VALUE, where FIELD is "type" or
"severity".
"""
import argparse
import re
import sys

BUFFERED = "one event was buffered!"
DROPPED = "one event was discarded!"
REPEATED = re.compile(r"the record above came (\d+) times more")


class Event:
    def __init__(self, fields):
        self.number, self.id, self.type, self.severity, self.element, outcome = fields
        self.held = outcome == "held"
        self.fate = "sent"


def read_lines(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read().splitlines()


def read_ledger(path):
    events, failed = [], set()
    for line in read_lines(path):
        kind, *fields = line.split(",")
        if kind == "event":
            events.append(Event(fields))
        elif kind == "loss":
            failed.add(fields[1])
    return events, failed


def read_traces(path):
    """What was held back, in order; the log counts equal records instead of writing them again and again."""
    traces, last = [], ""
    for line in read_lines(path):
        repeated = REPEATED.search(line)
        times = int(repeated.group(1)) if repeated else 1
        last = last if repeated else line
        if BUFFERED in last or DROPPED in last:
            traces += [last] * times
    return traces


def settle_fates(events, failed, trace_log):
    """The library traces each event that it holds back, in the order of the pushes; heartbeats only where the push of
    one failed."""
    traces = read_traces(trace_log)
    traced = [e for e in events if e.held and (e.type != "NT_HEARTBEAT" or e.id in failed)]
    for event in events:
        if event.held:
            event.fate = "stale"
    for event, trace in zip(traced, traces):
        event.fate = "buffered" if BUFFERED in trace else "dropped"
    if len(traced) == len(traces):
        return []
    return [f"{len(traced)} events were held back, but the agent's traces tell of {len(traces)}"]


def selected(event, selection):
    field, _, values = selection.partition("=")
    return not field or getattr(event, field) in values.split("|")


def received(path):
    """The ids of the printed events, in their order."""
    lines = [line.split() for line in read_lines(path) if line and not line.startswith("--")]
    return [words[2] for words in lines if len(words) > 2]


def account(name, events, got, selection, failed, doubts):
    """The counts of one OSS, and what is wrong with them."""
    lost = ("dropped", "stale")
    expected = [e for e in events if e.fate not in lost and selected(e, selection)]
    places = {e.id: place for place, e in enumerate(expected)}
    first = list(dict.fromkeys(got))
    again = [i for i in first if got.count(i) > 1 and i not in failed]
    problems = [f"{name} lacks {e.id} (event {e.number})" for e in expected if e.id not in set(got)]
    problems += [f"{name} got {i}, which isn't for it" for i in first if i not in places]
    if len(again) > doubts:
        problems.append(f"{name} got {', '.join(again)} again, and the service was in doubt of {doubts}")
    order = [places[i] for i in first if i in places]
    if order != sorted(order):
        problems.append(f"{name} got events in another order than they were raised")
    arrived = [e for e in expected if e.id in set(got)]
    counts = {
        "raised": len(events),
        "delivered": sum(e.fate == "sent" for e in arrived),
        "buffered, then delivered": sum(e.fate == "buffered" for e in arrived),
        "filtered": sum(e.fate not in lost and not selected(e, selection) for e in events),
        "dropped by the limit": sum(e.fate == "dropped" for e in events),
        "heartbeats dropped": sum(e.fate == "stale" for e in events),
    }
    rest = counts["raised"] - sum(list(counts.values())[1:])
    if rest != 0:
        problems.append(f"{name}: {rest} of {counts['raised']} events are not accounted for")
    counts["came again, in doubt"] = len(got) - len(first)
    return counts, problems


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--ledger", required=True)
    parser.add_argument("--traces", required=True)
    parser.add_argument("--service", required=True, help="what the notification service wrote")
    parser.add_argument("--oss", nargs=3, action="append", metavar=("NAME", "OUTPUT", "SELECTION"), required=True)
    options = parser.parse_args()
    events, failed = read_ledger(options.ledger)
    problems = settle_fates(events, failed, options.traces)
    doubts = sum("twice" in line for line in read_lines(options.service))
    columns = []
    for name, output, selection in options.oss:
        # A push that failed when the service died may have got through, and is made again.
        counts, wrong = account(name, events, received(output), selection, failed, doubts)
        columns.append((name, counts))
        problems += wrong
    print(" " * 26 + "".join(f"{name:>20}" for name, _ in columns))
    for row in columns[0][1]:
        print(f"{row:<26}" + "".join(f"{counts[row]:>20}" for _, counts in columns))
    for problem in problems[:10]:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
