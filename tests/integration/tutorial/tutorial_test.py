#!/usr/bin/env python3
"""Holds the tutorial against the programs. Each command ends with 1 and a reason when they differ.

    tutorial_test.py pages  DOCS                                   the blocks that are marked as from a file
    tutorial_test.py oss    DOCS WORK [CMAKE_ARGUMENT...]          builds the OSS that the steps are tried with
    tutorial_test.py step   DOCS WORK PREFIX NAME [CMAKE_ARGUMENT...]   builds a step and does what its page shows

DOCS is docs/bundle, WORK a directory of the test, PREFIX where the library is installed, NAME a folder of steps/.
"""
import pathlib
import shutil
import sys

from tutorial import page, session, terminal


def page_of(docs, step):
    return docs / (step.replace("_", "-", 1) + ".md")


def steps_of(docs):
    return sorted(folder.name for folder in (docs / "steps").iterdir() if folder.name[0].isdigit())


def block_problems(docs, path):
    for block in page.read_blocks(path):
        if block.kind == "":
            yield f"{block.place}: the line ahead of the block names neither a file nor a terminal"
        if block.kind == "file":
            file = docs / "steps" / block.subject
            if not file.is_file():
                yield f"{block.place}: there is no file {block.subject}"
            elif block.text not in file.read_text(encoding="utf-8"):
                yield f"{block.place}: these lines do not stand in {block.subject}:\n{block.text}"


def check_pages(docs):
    problems = []
    for step in steps_of(docs):
        path = page_of(docs, step)
        if not path.is_file():
            problems.append(f"steps/{step} has no page {path.name}")
            continue
        problems.extend(block_problems(docs, path))
        if not any(block.kind == "run" for block in page.read_blocks(path)):
            problems.append(f"{path.name} shows no run")
    if not steps_of(docs):
        problems.append("there are no steps")
    return problems


def build_oss(docs, work, arguments):
    target = work / "oss" / "weather"
    shutil.rmtree(target, ignore_errors=True)
    shutil.copytree(docs / "steps" / "weather", target)
    session.build_project(target, arguments)


def run_step(docs, work, prefix, name, arguments):
    path = [str(prefix / "bin"), str(work / "oss" / "weather" / "build")]
    with session.Session(docs / "steps", name, work / "run" / name, path) as reader:
        reader.build(arguments)
        reader.play(page.read_blocks(page_of(docs, name)))


def main(arguments):
    try:
        command, docs, *rest = arguments
        docs = pathlib.Path(docs)
        if command == "pages":
            problems = check_pages(docs)
        elif command == "oss":
            problems = build_oss(docs, pathlib.Path(rest[0]), rest[1:]) or []
        else:
            work, prefix, name, *cmake_arguments = rest
            problems = run_step(docs, pathlib.Path(work), pathlib.Path(prefix), name, cmake_arguments) or []
    except (page.PageError, terminal.Mismatch) as problem:
        problems = [str(problem)]
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
