"""Compares what a page shows with what was printed: times, ids, ports and references differ from run to run."""
import re

# What differs, and what stands for it. The order counts.
_VARYING = [
    (re.compile(r"IOR:[0-9a-f]+(…|\.\.\.)?"), "IOR:<hex>"),
    (re.compile(r"\b\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d(\.\d+)?([+-]\d\d:\d\d|Z)?"), "<time>"),
    (re.compile(r"\b20\d{12}\.0Z?(?!\w)"), "<time>"),
    (re.compile(r"<time> \[\d+\]"), "<time> [<thread>]"),
    (re.compile(r"\b(0[1-9]|1[0-2])[0-3]\d[0-2]\d[0-5]\d[0-5]\d(\d{1,3})\b"), r"<moment>\2"),
    (re.compile(r"(\b127\.0\.0\.1:)\d{4,5}\b"), r"\1<port>"),
    (re.compile(r"\*=[0-9a-zA-Z.:]+"), "*=<address>"),
    (re.compile(r"Request ID = \d+"), "Request ID = <n>"),
    (re.compile(r"\b(request|process|thread|Thread|thread:) ?\d+"), r"\1 <n>"),
    (re.compile(r"\b(\d+ ms|\d+\.\d+ s)\b"), "<duration>"),
    (re.compile(r"\S*/steps/"), "<steps>/"),
]
ANYTHING = "..."  # a line that stands for any number of lines


def normalised(line):
    for pattern, stand_in in _VARYING:
        line = pattern.sub(stand_in, line)
    return line.rstrip()


def fits(expected, printed):
    """Whether these lines are what is expected."""
    if not expected:
        return not printed
    if expected[0] == ANYTHING:
        return any(fits(expected[1:], printed[start:]) for start in range(len(printed) + 1))
    return bool(printed) and normalised(expected[0]) == normalised(printed[0]) and fits(expected[1:], printed[1:])


def difference(expected, printed):
    """For the person who has to mend the page or the program."""
    shown = "\n".join("    " + line for line in expected)
    came = "\n".join("    " + line for line in printed)
    return f"the page shows\n{shown}\nand what came is\n{came}"
