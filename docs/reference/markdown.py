"""What the manual needs to know of a Markdown page: its headings, its links, and which lines are code."""
import re

FENCE = re.compile(r"\s*(```+|~~~+)")
HEADING = re.compile(r"(#{1,6}) +(.*?) *#*$")
# [text](target), also where the text holds code in backticks or an image; a target without blanks.
LINK = re.compile(r"(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^()\s]+(?:\([^()\s]*\))?)\)")
CODE = re.compile(r"(`+)(?:.*?)\1")


def lines_of(text):
    """Each line with whether it is part of a fenced block (the fences included)."""
    fence = None
    for line in text.splitlines():
        found = FENCE.match(line)
        if fence is None:
            fence = found.group(1) if found else None
            yield line, fence is not None
        else:
            if line.strip() == fence:
                fence = None
            yield line, True


def slug(heading):
    """The anchor that a repository viewer gives a heading."""
    text = LINK.sub(r"\2", heading).lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def anchors_of(text):
    """The anchors of all headings, numbered where two are alike."""
    seen, anchors = {}, []
    for line, code in lines_of(text):
        found = None if code else HEADING.match(line)
        if found:
            name = slug(found.group(2))
            count = seen.get(name, 0)
            seen[name] = count + 1
            anchors.append(name if count == 0 else f"{name}-{count}")
    return anchors


def without_code(line):
    """The line with blanks where code stands, so that nothing in it counts as a link."""
    return CODE.sub(lambda found: " " * len(found.group()), line)


def is_elsewhere(target):
    """A link that leaves the repository."""
    return re.match(r"[a-z][a-z0-9+.-]*:", target) is not None
