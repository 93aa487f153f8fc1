#!/usr/bin/env python3
"""Checks the links between the pages: each target has to exist, and so has the heading that it names.

    check_links.py ROOT [PAGE...]

Without pages all *.md below ROOT/docs and those directly in ROOT. Ends with 1 when a link is broken. Links that leave
the repository are not followed.
"""
import pathlib
import sys
import urllib.parse

import markdown


def pages_of(root):
    return sorted(root.glob("*.md")) + sorted((root / "docs").rglob("*.md"))


def problem_of(page, target):
    """Why this link of `page` leads nowhere; empty when it leads somewhere."""
    path, _, anchor = urllib.parse.unquote(target).partition("#")
    file = (page.parent / path) if path else page
    if not file.exists():
        return "there is no such file"
    if anchor and file.suffix == ".md" and anchor not in markdown.anchors_of(file.read_text(encoding="utf-8")):
        return "that page has no such heading"
    return ""


def main(arguments):
    root = pathlib.Path(arguments[0]).resolve()
    pages = [pathlib.Path(page).resolve() for page in arguments[1:]] or pages_of(root)
    broken = 0
    for page in pages:
        for number, target in markdown.links_of(page.read_text(encoding="utf-8")):
            problem = "" if markdown.is_elsewhere(target) else problem_of(page, target)
            if problem:
                print(f"{page.relative_to(root)}:{number}: {target}: {problem}", file=sys.stderr)
                broken += 1
    if not pages:
        print(f"there are no pages below {root}", file=sys.stderr)
    return 1 if broken or not pages else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
