"""A terminal of the tutorial's reader: runs one command after the other and keeps what they print."""
import os
import signal
import subprocess
import threading
import time

from tutorial import output

PATIENCE = 60  # seconds that an expected line may take
PAUSE = 0.02


class Mismatch(Exception):
    """The page does not show what the programs print."""


class Terminal:
    """One thread uses it. `to_run` and `to_show` translate between the page and this run."""

    def __init__(self, name, directory, environment, to_run, to_show):
        self._name = name
        self._directory = directory
        self._environment = environment
        self._to_run = to_run
        self._to_show = to_show
        self._process = None
        self._reader = None
        self._printed = []  # lines of the running command that no block has shown yet
        self._lock = threading.Lock()

    def start(self, command):
        if self._process is not None:
            raise Mismatch(f"terminal {self._name}: something is still running when \"{command}\" is typed")
        self._printed = []
        self._process = subprocess.Popen(
            ["bash", "-c", self._to_run(command)], cwd=self._directory, env=self._environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        self._reader = threading.Thread(target=self._read, args=(self._process.stdout,), daemon=True)
        self._reader.start()

    def interrupt(self):
        if self._process is None:
            raise Mismatch(f"terminal {self._name}: ^C, and nothing is running")
        os.killpg(self._process.pid, signal.SIGINT)

    def expect_end(self, expected):
        """The command ends, having printed these lines and no others."""
        try:
            self._process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Mismatch(f"terminal {self._name}: the command doesn't end; "
                           + output.difference(expected, self._lines())) from None
        self._finish()
        printed = self._take()
        if not output.fits(expected, printed):
            raise Mismatch(f"terminal {self._name}: " + output.difference(expected, printed))

    def expect_lines(self, expected):
        """The command prints these lines next and goes on running. What it prints then is for the next block."""
        end = time.monotonic() + PATIENCE
        while True:
            ended = self._process.poll() is not None
            printed = self._lines()
            for count in range(len(printed) + 1):
                if output.fits(expected, printed[:count]):
                    self._drop(count)
                    return
            if ended or time.monotonic() > end:
                raise Mismatch(f"terminal {self._name}: " + output.difference(expected, printed))
            time.sleep(PAUSE)

    def close(self):
        """Ends what is running. Returns the lines that nobody has asked for."""
        if self._process is not None:
            try:
                os.killpg(self._process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            self._process.wait()
            self._finish()
        return self._take()

    def _finish(self):
        self._reader.join()
        self._process.stdout.close()
        self._process = None

    def _read(self, stream):
        for line in stream:
            with self._lock:
                self._printed.append(self._to_show(line.decode("utf-8", "replace").rstrip("\n")))

    def _lines(self):
        with self._lock:
            return list(self._printed)

    def _drop(self, count):
        with self._lock:
            del self._printed[:count]

    def _take(self):
        with self._lock:
            taken, self._printed = self._printed, []
        return taken
