"""Holds the pages against the tree: links_test.py ROOT

 - Each relative link of a page leads to a file or folder, and its #anchor to a heading of that page.
 - Tests that are named behind a link to their source (…_test.cpp) `LikeThis`, `AndThis` are in it.
 - Each path in backticks that begins with a folder of the tree exists; a * stands for anything. Paths below build/ are
   made later, and NAME stands for a name.
"""

import re
import sys
from pathlib import Path

PAGES = ("*.md", "demo/*.md", "docs/**/*.md")
FENCE = re.compile(r"^\s*(```|~~~)")
LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
CODE = re.compile(r"`([^`]+)`")
PATH = re.compile(r"[A-Za-z0-9_.*-]+(?:/[A-Za-z0-9_.*-]+)+/?")
OUTSIDE = ("build/",)


def without_code_blocks(page):
    """(number, line) of all lines outside of fenced and indented blocks."""
    lines = []
    fenced = False
    for number, line in enumerate(page.splitlines(), 1):
        if FENCE.match(line):
            fenced = not fenced
        elif not fenced and not re.match(r"    \S", line):
            lines.append((number, line))
    return lines


def anchor_of(heading):
    """The anchor that renderers make of a heading."""
    text = re.sub(r"[`*]", "", re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading)).strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def anchors(page):
    found = []
    for _, line in without_code_blocks(page):
        heading = re.match(r"#{1,6} (.*)", line)
        if heading:
            found.append(anchor_of(heading.group(1)))
        found += re.findall(r"<a (?:id|name)=\"([^\"]+)\"", line)
    return found


def link_problem(root, page, link):
    """What is wrong with a link of a page; None when nothing is."""
    if re.match(r"[a-z]+:", link):
        return None
    target, _, anchor = link.partition("#")
    path = (page.parent / target) if target else page
    if not path.exists():
        return f"leads nowhere: {link}"
    if root.resolve() not in (path.resolve(), *path.resolve().parents):
        return f"leads out of the tree: {link}"
    if anchor and path.suffix == ".md" and anchor not in anchors(path.read_text(encoding="utf-8")):
        return f"leads to no heading: {link}"
    return None


def path_problem(root, page, folders, text):
    """What is wrong with a path in backticks; None when it exists, beside the page too, or is no path of the tree."""
    text = text.split(" ")[0].rstrip(":")
    if not PATH.fullmatch(text) or text.startswith(OUTSIDE) or text.split("/")[0] not in folders or "NAME" in text:
        return None
    if any(True for folder in (root, page.parent) for _ in folder.glob(text.rstrip("/"))):
        return None
    return f"names no file of the tree: {text}"


def test_problems(page, line):
    """The tests named behind a link to a test's source that aren't in it."""
    found = []
    for target, names in re.findall(r"\]\(([^)\s]+_test\.cpp)\)((?:,? `\w+`)+)", line):
        source = page.parent / target
        known = source.read_text(encoding="utf-8") if source.exists() else ""
        found += [f"{target} has no test {name}" for name in CODE.findall(names)
                  if not re.search(rf"\b{name}\b", known)]
    return found


def problems_of(root, page, folders):
    found = []
    for number, line in without_code_blocks(page.read_text(encoding="utf-8")):
        problems = [link_problem(root, page, link) for link in LINK.findall(re.sub(CODE, "", line))]
        problems += [path_problem(root, page, folders, code) for code in CODE.findall(line)]
        problems += test_problems(page, line)
        found += [f"{page.relative_to(root)}:{number}: {problem}" for problem in problems if problem]
    return found


def main(root):
    folders = {path.name for path in root.iterdir() if path.is_dir()}
    pages = sorted({page for pattern in PAGES for page in root.glob(pattern)})
    problems = [problem for page in pages for problem in problems_of(root, page, folders)]
    for problem in problems:
        print(problem)
    print(f"{len(pages)} pages, {len(problems)} problems")
    return 1 if problems or not pages else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
