"""Processes of the benchmarks. Each ends with the benchmark that started it, however that one ends."""
import ctypes
import json
import os
import random
import signal
import socket
import subprocess
import sys
import threading

LIBC = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1


class Failure(Exception):
    """What could not be measured, and why: a sentence for the person who runs the benchmark."""


def end_tidily():
    """Lets SIGTERM end this process as Ctrl-C does, so that what it has started is ended and removed."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended by SIGTERM"))


def end_with_parent():
    """For the child of a fork: the kernel kills it when its parent is killed."""
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


GIVEN_PORTS = set()


def free_port():
    """A port of 127.0.0.1 that nobody uses, another one with each call. Below those that the system hands out by itself:
    clients take from there between the choice and the start of the server."""
    while True:
        port = random.randint(20000, 32000)
        if port in GIVEN_PORTS:
            continue
        with socket.socket() as probe:
            try:
                probe.bind(("", port))
                GIVEN_PORTS.add(port)
                return port
            except OSError:
                continue


def status_kib(pid, key):
    """A value of /proc/PID/status, as VmRSS or VmHWM, in KiB."""
    with open(f"/proc/{pid}/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith(key + ":"))


def reset_peak(pid):
    """Lets VmHWM of that process begin anew."""
    with open(f"/proc/{pid}/clear_refs", "w") as file:
        file.write("5")


def last_words(path):
    """How a program's log ends, to go on a sentence about its end."""
    with open(path, errors="replace") as log:
        lines = log.read().split("\n")
    lines = [line.strip() for line in lines if line.strip()]
    return ": " + lines[-1] if lines else " without a message"


def start(command, environment=None, **options):
    """A process that ends with this one."""
    try:
        return subprocess.Popen(command, env={**os.environ, **(environment or {})}, preexec_fn=end_with_parent,
                                text=True, **options)
    except OSError as problem:
        raise Failure(f"{command[0]} can't be run: {problem.strerror}; build it first (./run.sh bench does)") from None


class Process:
    """A program that tells on its standard output what there is to know, line by line. Use it with `with`."""

    def __init__(self, command, log, environment=None):
        self.log = open(log, "a")
        self.name = os.path.basename(command[0])
        self.process = start(command, environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.log)

    @property
    def pid(self):
        return self.process.pid

    def line(self):
        text = self.process.stdout.readline()
        if not text:
            raise Failure(f"{self.name} ended{last_words(self.log.name)}")
        return text.strip()

    def lines_until(self, last):
        lines = []
        while (text := self.line()) != last:
            lines.append(text)
        return lines

    def ask(self, question):
        """Sends one line and returns the JSON of the line that answers it."""
        try:
            self.process.stdin.write(f"{question}\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            raise Failure(f"{self.name} ended{last_words(self.log.name)}") from None
        return json.loads(self.line())

    def ignore_rest(self):
        """Reads what else it prints, so that it never waits for a reader."""
        threading.Thread(target=self.process.stdout.read, daemon=True).start()

    def memory_kib(self):
        return status_kib(self.pid, "VmRSS")

    def peak_mib(self):
        return status_kib(self.pid, "VmHWM") / 1024

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()
        self.log.close()
