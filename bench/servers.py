"""Servers and clients of the benchmarks that call the servant of request_path."""
import os
import subprocess
import time

from processes import Failure, end_with_parent, free_port, last_words, reset_peak, start, status_kib

SETTINGS = """
[agent]
CORBAAgent_Host = "127.0.0.1"
CORBAAgent_Port = {port}
{more}
"""


class Server:
    """A process that writes the reference of its servant to a file in `folder`."""

    def __init__(self, command, folder, environment=None):
        self.reference = folder / "reference"
        self.log = open(folder / "log", "w")
        self.process = start([command[0], str(self.reference), *command[1:]], environment, stdout=self.log,
                             stderr=subprocess.STDOUT)

    def wait_until_ready(self):
        deadline = time.monotonic() + 20
        while not self.reference.exists():
            if self.process.poll() is not None or time.monotonic() > deadline:
                name = os.path.basename(self.process.args[0])
                raise Failure(f"{name} did not start{last_words(self.log.name)}")
            time.sleep(0.02)

    def cpu_seconds(self):
        """User and system time, to a hundredth of a second."""
        with open(f"/proc/{self.process.pid}/stat") as stat:
            fields = stat.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def memory_kib(self):
        return status_kib(self.process.pid, "VmRSS")

    def peak_kib(self):
        """The most since the start, or since reset_peak."""
        return status_kib(self.process.pid, "VmHWM")

    def reset_peak(self):
        reset_peak(self.process.pid)

    def open_files(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.log.close()


def plain_server(build, folder, *options):
    """The servant on the ORB as it is packaged."""
    return Server([build / "bin/bench_plain_server", *options], folder)


def seam_server(build, folder, *options, port=0):
    """The servant on the ORB seam alone; `port` may carry more of the end point."""
    return Server([build / "bin/bench_seam_server", "-ORBEndpoint", f"iiop://127.0.0.1:{port}", *options], folder)


def library_server(build, folder, settings):
    """The servant behind the library, with these further lines of its configuration."""
    config = folder / "agent.toml"
    config.write_text(SETTINGS.format(port=free_port(), more=settings))
    return Server([build / "bin/bench_library_server"], folder, {
        "QV_AGENT_CONFIG": str(config), "QV_LOG_DIR": str(folder), "QV_ENV_ROOT": str(folder),
        "QV_CFG_DIR": str(folder)})


def measure_calls(build, server, threads, seconds, *options):
    """Calls it from so many threads; `options` are for the client's ORB."""
    answer = subprocess.run([build / "bin/bench_client", str(server.reference), str(threads), str(seconds), *options],
                            capture_output=True, text=True, timeout=seconds + 30, preexec_fn=end_with_parent)
    if answer.returncode != 0:
        raise Failure(answer.stderr.strip() or "the client failed")
    rate, cpu = answer.stdout.split()
    return {"calls_per_second": float(rate), "server_us_per_call": float(cpu)}
