"""Goes through a page of the tutorial as its reader does, in a copy of the step's project."""
import os
import pathlib
import re
import shutil
import socket
import subprocess
import time

from tutorial import page, terminal

PAGE_PORTS = ("12001", "12002", "12003")  # as the pages have them
PAGE_HOST = "127.0.0.2"
BUILD_LIMIT = 300  # seconds


def free_ports(count):
    """Different ports of the tutorial's host that nobody uses now."""
    held = [socket.socket() for _ in range(count)]
    for one in held:
        one.bind((PAGE_HOST, 0))
    ports = [str(one.getsockname()[1]) for one in held]
    for one in held:
        one.close()
    return ports


def exchanger(here, there):
    """A function that puts the texts of `there` where those of `here` stand as whole numbers."""
    table = dict(zip(here, there))
    pattern = re.compile(r"\b(" + "|".join(here) + r")\b")
    return lambda text: pattern.sub(lambda found: table[found.group()], text)


class Session:
    """The terminals of one reader. Ends what runs in them when it goes."""

    def __init__(self, steps: pathlib.Path, name, work: pathlib.Path, path):
        shutil.rmtree(work, ignore_errors=True)
        work = work / "steps"
        for folder in ("weather", name):
            shutil.copytree(steps / folder, work / folder)
        self.directory = work / name
        ports = free_ports(len(PAGE_PORTS))
        self._to_run = exchanger(PAGE_PORTS, ports)
        self._to_show = exchanger(ports, PAGE_PORTS)
        for file in self.directory.glob("*.toml"):
            file.write_text(self._to_run(file.read_text(encoding="utf-8")), encoding="utf-8")
        self._environment = {key: value for key, value in os.environ.items()
                             if not key.startswith(("QV_", "XDG_")) and key != "LD_LIBRARY_PATH"}
        self._environment["HOME"] = str(work)
        self._environment["PATH"] = ":".join([*path, os.environ["PATH"]])
        self._terminals = {}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for one in self._terminals.values():
            one.close()

    def build(self, configure_arguments):
        build_project(self.directory, configure_arguments)

    def play(self, blocks):
        """Types what the run blocks show, and raises Mismatch where something else comes out."""
        for block in blocks:
            if block.kind == "run":
                try:
                    self._play_block(block)
                except terminal.Mismatch as problem:
                    raise terminal.Mismatch(f"{block.place}: {problem}") from None
        for name, one in self._terminals.items():
            left = one.close()
            if left:
                raise terminal.Mismatch(f"terminal {name} printed what no page shows:\n" + "\n".join(left))

    def _play_block(self, block):
        one = self._terminal(block.subject)
        entries = page.read_entries(block)
        for position, entry in enumerate(entries):
            last = position == len(entries) - 1
            if entry.command == "^C":
                one.interrupt()
            elif entry.command:
                one.start(entry.command)
            before_interrupt = not last and entries[position + 1].command == "^C"
            if (last and block.mode in ("stays", "goes on") and entry.command != "^C") or before_interrupt:
                one.expect_lines(entry.output)
            elif block.mode == "until it fits":
                self._repeat(one, entry)
            else:
                one.expect_end(entry.output)

    @staticmethod
    def _repeat(one, entry):
        end = time.monotonic() + terminal.PATIENCE
        while True:
            try:
                one.expect_end(entry.output)
                return
            except terminal.Mismatch:
                if time.monotonic() > end:
                    raise
            time.sleep(10 * terminal.PAUSE)
            one.start(entry.command)

    def _terminal(self, name):
        if name not in self._terminals:
            self._terminals[name] = terminal.Terminal(
                name, self.directory, self._environment, self._to_run, self._to_show)
        return self._terminals[name]


def build_project(directory, configure_arguments):
    """Configures and builds a project that knows nothing of this tree but the installed package."""
    for command in (["cmake", "-S", directory, "-B", directory / "build", "-G", "Ninja", *configure_arguments],
                    ["cmake", "--build", directory / "build", "--parallel", "2"]):
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                             timeout=BUILD_LIMIT, check=False)
        if run.returncode != 0:
            raise terminal.Mismatch(f"{' '.join(map(str, command))} ended with {run.returncode}:\n{run.stdout}")
