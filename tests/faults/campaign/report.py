"""The table at the end, and the same as JSON."""
import json
import statistics
from dataclasses import dataclass, field

# Title, where in a line, and its columns.
GROUPS = [
    ("REQUESTS", "requests", ("made", "answered", "failed", "lost", "twice")),
    ("EVENTS (both consumers)", "events", ("raised", "received", "lost", "twice", "told")),
    ("AUDIT ROWS", "audit", ("rows", "open", "lost", "told")),
]


@dataclass
class Line:
    """One kind of fault."""
    kind: str
    stated: float = 0.0
    recoveries: list = field(default_factory=list)
    requests: dict = field(default_factory=dict)
    events: dict = field(default_factory=dict)
    audit: dict = field(default_factory=dict)
    problems: list = field(default_factory=list)

    def add(self, requests, events, audit):
        for own, more in ((self.requests, requests), (self.events, events), (self.audit, audit)):
            for name, number in more.items():
                own[name] = own.get(name, 0) + number

    def as_json(self):
        return {"kind": self.kind, "times": len(self.recoveries), "recovery_stated_s": self.stated,
                "recovery_median_s": _rounded(_median(self.recoveries)),
                "recovery_worst_s": _rounded(max(self.recoveries, default=None)),
                "requests": self.requests, "events": self.events, "audit": self.audit,
                "problems": self.problems,
                "balances": not self.problems}


def _median(numbers):
    return statistics.median(numbers) if numbers else None


def _rounded(number):
    return None if number is None else round(number, 2)


def _seconds(number):
    return "-" if number is None else f"{number:.1f}"


def _cells(line):
    cells = [line.kind, str(len(line.recoveries)), _seconds(line.stated or None), _seconds(_median(line.recoveries)),
             _seconds(max(line.recoveries, default=None))]
    for _, part, columns in GROUPS:
        counts = getattr(line, part)
        cells += [str(counts.get(column, 0)) for column in columns]
    played = line.recoveries or not line.stated
    return [*cells, "FAILED" if line.problems else "ok" if played else "-"]


def table(lines):
    """One line for each kind of fault."""
    head = ["FAULT", "TIMES", "STATED", "MEDIAN", "WORST"]
    sizes, titles = [1, 4], ["", "RECOVERY (s)"]
    for title, _, columns in GROUPS:
        head += [column.upper() for column in columns]
        sizes.append(len(columns))
        titles.append(title)
    rows = [[*head, "VERDICT"], *map(_cells, lines)]
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    above, begin = "", 0
    for title, size in zip(titles, sizes):
        above += title.ljust(sum(widths[begin:begin + size]) + 2 * size)
        begin += size
    text = [above.rstrip()]
    for row in rows:
        text.append("  ".join([row[0].ljust(widths[0]), *(c.rjust(w) for c, w in zip(row[1:], widths[1:]))]))
    return "\n".join(text)


def write_json(path, summary, lines):
    with open(path, "w", encoding="utf-8") as file:
        json.dump({**summary, "faults": [line.as_json() for line in lines]}, file, indent=2)
        file.write("\n")
