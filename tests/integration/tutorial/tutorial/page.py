"""The marked blocks of a page of the tutorial.

The line ahead of a fenced block says what stands in it:

    `03_interface/main.cpp`:               these lines stand so in that file below docs/bundle/steps
    Terminal *agent*: <!-- stays -->       what is typed into that terminal of the step's reader, and what it prints

The comment tells what distinguishes a run: "stays" (its last command is still running at the block's end), "goes on"
(of such a command), "until it fits" (commands that are repeated until they print what is expected, since what they
look at takes a moment).
"""
import dataclasses
import pathlib
import re

_FILE = re.compile(r"`([\w./]+)`:$")
_RUN = re.compile(r"Terminal \*(\w+)\*:(?: <!-- (.*) -->)?$")
_FENCE = re.compile(r"(```+|~~~+)(\w*)$")
MODES = ("", "stays", "goes on", "until it fits")


class PageError(Exception):
    """What is wrong with a page's markup."""


@dataclasses.dataclass
class Block:
    kind: str  # file, run; empty without a mark
    subject: str  # the file or the terminal
    mode: str
    lines: list
    place: str  # page:line

    @property
    def text(self):
        return "".join(line + "\n" for line in self.lines)


def _mark_of(line, place):
    """Kind, subject and mode, if the line is a mark."""
    file, run = _FILE.match(line), _RUN.match(line)
    if file:
        return "file", file.group(1), ""
    if not run:
        return "", "", ""
    mode = run.group(2) or ""
    if mode not in MODES:
        raise PageError(f"{place}: \"{mode}\" is none of {MODES}")
    return "run", run.group(1), mode


def read_blocks(page: pathlib.Path):
    """All fenced blocks, in their order."""
    blocks, mark, block, fence = [], ("", "", ""), None, None
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if block is not None:
            if line == fence:
                blocks.append(block)
                block, mark = None, ("", "", "")
            else:
                block.lines.append(line)
            continue
        opening = _FENCE.match(line)
        if opening:
            fence = opening.group(1)
            block = Block(*mark, [], f"{page.name}:{number}")
        if line:
            mark = _mark_of(line, f"{page.name}:{number}")
    if block is not None:
        raise PageError(f"{block.place}: the block has no end")
    return blocks


@dataclasses.dataclass
class Entry:
    """One command of a run block, an interrupt ("^C") or, without either, more output of a command that runs."""

    command: str
    output: list


def read_entries(block: Block):
    entries = []
    for line in block.lines:
        if line.startswith("$ "):
            entries.append(Entry(line[2:], []))
        elif line == "^C":
            entries.append(Entry("^C", []))
        else:
            if not entries:
                entries.append(Entry("", []))
            entries[-1].output.append(line)
    return entries
