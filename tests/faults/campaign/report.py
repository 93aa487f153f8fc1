"""The table at the end, and the same as JSON."""
import json
import statistics
from dataclasses import dataclass, field

REQUEST_COLUMNS = ("made", "answered", "failed", "lost", "twice")
EVENT_COLUMNS = ("raised", "received", "lost", "twice", "told")


@dataclass
class Line:
    """One kind of fault."""
    kind: str
    stated: float = 0.0
    recoveries: list = field(default_factory=list)
    requests: dict = field(default_factory=dict)
    events: dict = field(default_factory=dict)
    problems: list = field(default_factory=list)

    def add(self, recovery, requests, events, problems):
        if recovery is not None:
            self.recoveries.append(recovery)
        for own, more in ((self.requests, requests), (self.events, events)):
            for name, number in more.items():
                own[name] = own.get(name, 0) + number
        self.problems += problems

    def as_json(self):
        return {"kind": self.kind, "times": len(self.recoveries), "recovery_stated_s": self.stated,
                "recovery_median_s": _median(self.recoveries), "recovery_worst_s": max(self.recoveries, default=None),
                "requests": self.requests, "events": self.events, "problems": self.problems,
                "balances": not self.problems}


def _median(numbers):
    return round(statistics.median(numbers), 2) if numbers else None


def _seconds(number):
    return "-" if number is None else f"{number:.1f}"


def table(lines):
    head = ["FAULT", "TIMES", "STATED", "MEDIAN", "WORST", *(c.upper() for c in REQUEST_COLUMNS),
            *(c.upper() for c in EVENT_COLUMNS), "VERDICT"]
    rows = [head]
    for line in lines:
        rows.append([line.kind, str(len(line.recoveries)), _seconds(line.stated or None),
                     _seconds(_median(line.recoveries)), _seconds(max(line.recoveries, default=None)),
                     *(str(line.requests.get(c, 0)) for c in REQUEST_COLUMNS),
                     *(str(line.events.get(c, 0)) for c in EVENT_COLUMNS),
                     "ok" if not line.problems else "FAILED"])
    widths = [max(len(row[i]) for row in rows) for i in range(len(head))]
    groups = [widths[0], sum(widths[1:5]) + 6, sum(widths[5:10]) + 8, sum(widths[10:15]) + 8]
    titles = "  ".join(t.ljust(w) for t, w in zip(("", "RECOVERY (s)", "REQUESTS", "EVENTS (both consumers)"), groups))
    text = [titles.rstrip()]
    for row in rows:
        cells = [row[0].ljust(widths[0]), *(cell.rjust(width) for cell, width in zip(row[1:], widths[1:]))]
        text.append("  ".join(cells))
    return "\n".join(text)


def write_json(path, summary, lines):
    with open(path, "w", encoding="utf-8") as file:
        json.dump({**summary, "faults": [line.as_json() for line in lines]}, file, indent=2)
        file.write("\n")
