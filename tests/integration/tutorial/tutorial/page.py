"""The marked blocks of a page of the tutorial.

A comment ahead of a fenced block says what stands in it:

    <!-- file: 03_interface/main.cpp -->     these lines stand so in that file below docs/bundle/steps
    <!-- run: agent -->                      what is typed into the terminal "agent" of the step, and what it prints
    <!-- to try: why -->                     for the reader; nothing holds it against anything

Behind the terminal's name may stand, after a comma, what distinguishes a run: "stays" (its last command is still
running at the block's end), "goes on" (of such a command), "until it fits" (commands that are repeated until they
print what is expected, since what they look at takes a moment).
"""
import dataclasses
import pathlib
import re

_MARK = re.compile(r"<!-- (file|run|to try): (.*?) -->$")
_FENCE = re.compile(r"(```+|~~~+)(\w*)$")
MODES = ("", "stays", "goes on", "until it fits")


class PageError(Exception):
    """What is wrong with a page's markup."""


@dataclasses.dataclass
class Block:
    kind: str  # file, run, to try; empty without a mark
    subject: str
    mode: str
    lines: list
    place: str  # page:line

    @property
    def text(self):
        return "".join(line + "\n" for line in self.lines)


def _subject_and_mode(kind, text, place):
    if kind != "run":
        return text, ""
    subject, _, mode = (part.strip() for part in text.partition(","))
    if mode not in MODES:
        raise PageError(f"{place}: \"{mode}\" is none of {MODES}")
    return subject, mode


def read_blocks(page: pathlib.Path):
    """All fenced blocks, in their order."""
    blocks, mark, block, fence = [], None, None, None
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if block is not None:
            if line == fence:
                blocks.append(block)
                block = None
            else:
                block.lines.append(line)
            continue
        opening = _FENCE.match(line)
        if opening:
            fence = opening.group(1)
            kind, text = mark or ("", "")
            place = f"{page.name}:{number}"
            block = Block(kind, *_subject_and_mode(kind, text, place), [], place)
        marked = _MARK.match(line)
        mark = marked.groups() if marked else None
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
