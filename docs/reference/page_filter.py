#!/usr/bin/env python3
"""Prepares a Markdown page for Doxygen, on standard output: page_filter.py ROOT PAGE.

The pages are written for a repository viewer. Doxygen finds links between them, and to their headings, only by labels,
which are put in here; a link to a file that is no part of the manual becomes the file's path. What an entrance
(index.md, a folder's README.md) links to stands below it in the manual's tree.
"""
import pathlib
import re
import sys

import markdown


def label_of(page, root):
    """A page's label: unique, and the same whatever Doxygen makes of its path."""
    return "page_" + re.sub(r"\W", "_", str(page.relative_to(root / "docs").with_suffix("")))


def is_in_manual(file, root):
    return file.suffix == ".md" and root / "docs" in file.parents and file.exists()


def entrance_of(page, root):
    """The page that this one stands below in the tree."""
    index, readme = root / "docs" / "index.md", page.parent / "README.md"
    whole = page.with_name(page.stem.partition("-")[0] + ".md")  # messages.md of messages-agent.md
    if whole.exists() and whole != page:
        return whole
    return readme if readme.exists() and page != readme else index


class Filter:
    def __init__(self, root, page):
        self._root = root
        self._page = page
        self._below = set()  # pages that stand below this one already

    def run(self):
        text = self._page.read_text(encoding="utf-8")
        anchors = iter(markdown.anchors_of(text))
        first = True
        for line, code in markdown.lines_of(text):
            heading = None if code else markdown.HEADING.match(line)
            if heading:
                anchor = next(anchors)
                name = label_of(self._page, self._root) + ("" if first else "_" + anchor)
                title = markdown.LINK.sub(r"\2", heading.group(2)).replace("`", "")
                yield f"{heading.group(1)} {title} {{#{name}}}"
                first = False
            else:
                yield line if code else self._with_links(line)

    def _with_links(self, line):
        hidden = markdown.without_code(line)
        return markdown.LINK.sub(
            lambda found: self._link(found) if hidden[found.start(3) - 1] == "(" else found.group(), line)

    def _link(self, found):
        image, text, target = found.groups()
        if markdown.is_elsewhere(target):
            return found.group()
        path, _, anchor = target.partition("#")
        file = (self._page.parent / path).resolve() if path else self._page
        if image:
            return f"![{text}]({file.name})"
        if not is_in_manual(file, self._root):
            return self._outside(text, file)
        if not anchor and file not in {*self._below, self._page} and entrance_of(file, self._root) == self._page:
            self._below.add(file)
            return f'@subpage {label_of(file, self._root)} "{text}"'
        name = label_of(file, self._root) + (f"_{anchor}" if anchor and not self._is_title(file, anchor) else "")
        return f"[{text}](@ref {name})"

    @staticmethod
    def _is_title(file, anchor):
        return markdown.anchors_of(file.read_text(encoding="utf-8"))[0] == anchor

    def _outside(self, text, file):
        path = str(file.relative_to(self._root))
        plain = text.replace("`", "")
        if plain == path:
            return f"`{path}`"
        if plain == file.name:
            return f"`{path}`"
        return f"{text} (`{path}`)"


def main(arguments):
    root, page = (pathlib.Path(argument).resolve() for argument in arguments)
    for line in Filter(root, page).run():
        print(line)


if __name__ == "__main__":
    main(sys.argv[1:])
