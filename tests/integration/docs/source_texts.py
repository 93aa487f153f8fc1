"""Reads the texts out of C++ sources: string literals, adjacent ones joined, and the calls that log them."""

import re
from pathlib import Path

TOKEN = re.compile(
    r"//[^\n]*|/\*.*?\*/|R\"\(.*?\)\"|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+'|#[^\n]*|\s+|\w+|.", re.S)
ESCAPES = {"n": " ", "t": " ", '"': '"', "\\": "\\", "r": " "}
CONVERSION = re.compile(r"%[-+0 #]*\d*(?:\.\d+)?(?:hh|h|ll|l|z)?[diouxXcsfgpu]")
CONSTANT = re.compile(r"\b(k\w+)\s*=\s*(-?\d+)\s*;")


class Text:
    """One text of a source: where it stands, what it says (gaps of printf as …), and the statement before it."""

    def __init__(self, file, line, raw, statement):
        self.file = file
        self.line = line
        self.said = " ".join(CONVERSION.sub("…", unescape(raw)).split())
        self.statement = statement

    def place(self):
        return f"{self.file}:{self.line}"


def unescape(raw):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match.group(1), ""), raw)


def texts_of(file, source):
    """All string literals of a source as Texts; `file` is only a name."""
    found = []
    statement = []  # the tokens since the last end of a statement
    joined = None
    line = 1
    for match in TOKEN.finditer(source):
        token = match.group()
        if token.startswith('"') or token.startswith('R"('):
            if joined is None:
                joined = (line, [], "".join(statement))
            joined[1].append(token[3:-2] if token.startswith("R") else token[1:-1])
        elif not (token.isspace() or token.startswith(("//", "/*"))):
            if joined is not None:
                found.append(Text(file, joined[0], "".join(joined[1]), joined[2]))
                joined = None
            statement.append(token + " ")
            if token in ";{}" or token.startswith("#"):
                statement = []
        line += token.count("\n")
    return found


def constants_of(source):
    """The named integers of a source, by name."""
    return {name: int(value) for name, value in CONSTANT.findall(source)}


def channel_of(text, constants):
    """(channel, level) that a text is logged to; None when no log call is around it, level None when unknown."""
    calls = re.findall(r"\b(TaTrace|TaException|TaDebugWithPara|TaDebug|TADebug|TASys) \( ([^()]*)$", text.statement)
    if not calls:
        return None
    function, before = calls[-1]
    if function in ("TaTrace", "TASys"):
        return ("corbasys", -1)
    if function == "TaException":
        return ("corbadebug", 1)
    first = before.split(",")[0].replace(" ", "")
    if re.fullmatch(r"-?\d+", first):
        return ("corbadebug", int(first))
    return ("corbadebug", constants.get(first))


def sources_below(root, folders):
    """(name, text) of all C++ sources in the folders, sorted."""
    found = []
    for folder in folders:
        for path in sorted((Path(root) / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                found.append((str(path.relative_to(root)), path.read_text(encoding="utf-8")))
    return found
