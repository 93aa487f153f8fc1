"""A program of the campaign as a process that can be killed, stopped, starved, and started again."""
import os
import resource
import signal
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path

from . import kernel

START_LIMIT = 45.0


def descendants(pid):
    """The processes below `pid`, without itself."""
    children = {}
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                parent = int((entry / "stat").read_text().rpartition(")")[2].split()[1])
            except (OSError, IndexError):
                continue  # ended meanwhile
            children.setdefault(parent, []).append(int(entry.name))
    found, open_ones = [], [pid]
    while open_ones:
        below = children.get(open_ones.pop(), [])
        found += below
        open_ones += below
    return found


@dataclass
class Life:
    """Times are of the clock that never jumps."""
    pid: int
    started: float
    ended: float = None
    killed: bool = False


class Process:
    """`ready` is asked after each start until it says True. What the program writes is appended to NAME.out and
    NAME.err over all its lives."""

    def __init__(self, name, host, command, directory, ready=None, environment=None):
        self.name = name
        self.host = host
        self.incarnation = 0
        self.lives = []
        self.frozen_spans = []  # [begin, end or None]
        self._command = command
        self._directory = Path(directory)
        self._ready = ready or (lambda process: True)
        self._environment = dict(os.environ, **(environment or {}))
        self._popen = None
        self._out_begin = 0
        self.out = self._directory / f"{name}.out"
        self.err = self._directory / f"{name}.err"

    @property
    def pid(self):
        return self._popen.pid

    def running(self):
        return self._popen is not None and self._popen.poll() is None

    def start(self):
        """Starts the next life. `command` may be a function of the life's number."""
        self.incarnation += 1
        command = self._command(self.incarnation) if callable(self._command) else self._command
        self._out_begin = self.out.stat().st_size if self.out.exists() else 0

        def prepare():
            kernel.die_with_parent()
            kernel.enter_network_of(self.host.pid)

        with open(self.out, "ab") as out, open(self.err, "ab") as err:
            self._popen = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                           cwd=self._directory, env=self._environment, start_new_session=True,
                                           preexec_fn=prepare)
        self.lives.append(Life(self.pid, time.monotonic()))

    def said(self):
        """What this life wrote to its standard output."""
        with open(self.out, encoding="utf-8", errors="replace") as out:
            out.seek(self._out_begin)
            return out.read()

    def wait_ready(self):
        """Raises RuntimeError when the program ends instead, or takes too long."""
        end = time.monotonic() + START_LIMIT
        while not self._ready(self):
            if not self.running():
                raise RuntimeError(f"{self.name} ended with {self._popen.returncode} while it started; see {self.err}")
            if time.monotonic() > end:
                raise RuntimeError(f"{self.name} was not ready within {START_LIMIT:.0f} s; see {self.err}")
            time.sleep(0.05)

    def kill(self):
        """kill -9. What runs below it is waited for, as it has to end, too."""
        below = descendants(self.pid)
        self._popen.kill()
        self._popen.wait()
        self.lives[-1].ended, self.lives[-1].killed = time.monotonic(), True
        end = time.monotonic() + 5
        while any(Path(f"/proc/{pid}").exists() for pid in below):
            if time.monotonic() > end:
                raise RuntimeError(f"{self.name} was killed and left processes behind: {below}")
            time.sleep(0.02)

    def end(self, limit=20.0):
        """SIGTERM, and SIGKILL where that has no effect within `limit` seconds. Returns the exit code."""
        if not self.running():
            return self._popen.returncode if self._popen else None
        self._popen.terminate()
        try:
            self._popen.wait(limit)
        except subprocess.TimeoutExpired:
            self._popen.kill()
            self._popen.wait()
            self.lives[-1].killed = True
        self.lives[-1].ended = time.monotonic()
        return self._popen.returncode

    def freeze(self):
        self.frozen_spans.append([time.monotonic(), None])
        for pid in [self.pid, *descendants(self.pid)]:
            os.kill(pid, signal.SIGSTOP)

    def thaw(self):
        for pid in [self.pid, *descendants(self.pid)]:
            os.kill(pid, signal.SIGCONT)
        if self.frozen_spans and self.frozen_spans[-1][1] is None:
            self.frozen_spans[-1][1] = time.monotonic()

    def working_pid(self):
        """Of a front and the program below it, the latter."""
        below = descendants(self.pid)
        return below[0] if below else self.pid

    def open_files(self):
        return len(os.listdir(f"/proc/{self.working_pid()}/fd"))

    def limit_files(self, count):
        """The soft limit alone, which can be raised again."""
        _, hard = resource.prlimit(self.working_pid(), resource.RLIMIT_NOFILE)
        resource.prlimit(self.working_pid(), resource.RLIMIT_NOFILE, (min(count, hard), hard))

    def file_limit(self):
        return resource.prlimit(self.working_pid(), resource.RLIMIT_NOFILE)[0]

    def sample(self):
        """Descriptors, threads and resident KiB."""
        pid = self.working_pid()
        status = Path(f"/proc/{pid}/status").read_text()
        fields = dict(line.split(":", 1) for line in status.splitlines() if ":" in line)
        return {"files": len(os.listdir(f"/proc/{pid}/fd")), "threads": int(fields["Threads"]),
                "rss": int(fields["VmRSS"].split()[0])}
