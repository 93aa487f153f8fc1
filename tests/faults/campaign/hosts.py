"""Three hosts on this machine: a network namespace and a small disk for each, and the switch between them.

Everything goes with this process, however it ends: the namespaces have processes of ours alone, which are killed with
it, and the disks are mounted in a mount namespace that it has for itself.
"""
import subprocess
import time
from pathlib import Path

from . import kernel

ADDRESSES = {"ems": "10.77.0.1", "services": "10.77.0.2", "oss": "10.77.0.3"}
LINKS = [("ems", "services"), ("ems", "oss"), ("services", "oss")]
DEVICE = "qv0"
BALLAST = "ballast"


class Host:
    """A network namespace, held by a process that does nothing else, and a disk."""

    def __init__(self, name, directory, disk_mib):
        self.name = name
        self.address = ADDRESSES[name]
        self.disk = Path(directory) / name / "disk"
        self.disk.mkdir(parents=True)
        self.full_spans = []  # [begin, end or None], by the clock that never jumps
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={disk_mib}m", "qv-faults", self.disk], check=True)
        self._holder = subprocess.Popen(
            ["unshare", "--net", "sh", "-c", "echo there; exec sleep infinity"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, preexec_fn=kernel.die_with_parent)
        self._holder.stdout.readline()
        self.pid = self._holder.pid

    def run(self, *command):
        """Runs a command in the host's network to its end."""
        subprocess.run(["nsenter", f"--net=/proc/{self.pid}/ns/net", *command], check=True)

    def fill_disk(self):
        """Leaves no room at all."""
        self.full_spans.append([time.monotonic(), None])
        block = b"\0" * 65536
        with open(self.disk / BALLAST, "ab", buffering=0) as ballast:
            for size in (65536, 4096):
                try:
                    while ballast.write(block[:size]) == size:
                        pass
                except OSError:
                    pass  # full: that is what is wanted

    def release_disk(self):
        (self.disk / BALLAST).unlink(missing_ok=True)
        if self.full_spans and self.full_spans[-1][1] is None:
            self.full_spans[-1][1] = time.monotonic()

    def close(self):
        self._holder.kill()
        self._holder.wait()
        self._holder.stdout.close()
        subprocess.run(["umount", "--lazy", self.disk], check=False, stderr=subprocess.DEVNULL)


class Network:
    """The hosts and the switch. Raises OSError or RuntimeError where this machine doesn't allow what it takes."""

    def __init__(self, switch_program, directory, seed, disk_mib):
        self.hosts = {}
        self._switch = None
        try:
            for name in ADDRESSES:
                self.hosts[name] = Host(name, directory, disk_mib)
            self._start_switch(switch_program, Path(directory) / "switch.err", seed)
            for host in self.hosts.values():
                host.run("ip", "address", "add", f"{host.address}/24", "dev", DEVICE)
                host.run("ip", "link", "set", "lo", "up")
                host.run("ip", "link", "set", DEVICE, "up")
        except BaseException:
            self.close()
            raise

    def _start_switch(self, program, errors, seed):
        ends = [f"{host.name}:{host.pid}:{host.address}" for host in self.hosts.values()]
        with open(errors, "ab") as stderr:
            self._switch = subprocess.Popen(
                [program, str(seed), *ends], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=stderr, text=True,
                start_new_session=True, preexec_fn=kernel.die_with_parent)
        if self._switch.stdout.readline() != "ready\n":
            raise RuntimeError(f"the switch did not start; see {errors}")

    def order(self, line):
        """Tells the switch what to do, and returns the lines before its "ok"."""
        self._switch.stdin.write(line + "\n")
        self._switch.stdin.flush()
        lines = []
        while True:
            answer = self._switch.stdout.readline().rstrip("\n")
            if answer == "ok":
                return lines
            if not answer or answer.startswith("error"):
                raise RuntimeError(f"the switch answered \"{answer}\" to \"{line}\"")
            lines.append(answer)

    def counts(self):
        """What became of the packets, over all links."""
        totals = {}
        for line in self.order("counts"):
            words = line.split()[2:]
            for name, number in zip(words[::2], words[1::2]):
                totals[name] = totals.get(name, 0) + int(number)
        return totals

    def close(self):
        if self._switch is not None:
            self._switch.kill()
            self._switch.wait()
            self._switch.stdin.close()
            self._switch.stdout.close()
        for host in self.hosts.values():
            host.close()
