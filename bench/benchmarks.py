"""The benchmarks there are: what each runs, in full and for a quick look.

A command begins with a script of this folder or a program of the build; BUILD and JSON stand for the folder of the build
and for the file of the results.
"""
import pathlib
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
BUILD, JSON = "BUILD", "JSON"
MICRO = ("--benchmark_display_aggregates_only=true", "--benchmark_out_format=json", f"--benchmark_out={JSON}")


class Benchmark(NamedTuple):
    name: str
    what: str
    command: tuple
    full: tuple
    quick: tuple

    def line(self, build, json, quick):
        """The whole command."""
        places = {BUILD: str(build), JSON: str(json)}
        program, *rest = self.command
        path = HERE / program if program.endswith(".py") else build / "bin" / program
        words = [str(path), *rest, *(self.quick if quick else self.full)]
        return [places.get(word, word.replace(f"={JSON}", f"={json}")) for word in words]


def script(name, what, path, full, quick):
    return Benchmark(name, what, (path, BUILD, "--json", JSON), tuple(full.split()), tuple(quick.split()))


def micro(name, what, program):
    """One that is written with google-benchmark."""
    return Benchmark(name, what, (program, *MICRO), ("--benchmark_repetitions=5",),
                     ("--benchmark_repetitions=3", "--benchmark_min_time=0.05"))


BENCHMARKS = (
    script("request_path", "calls, and CPU per call by log setting, beside the plain ORB",
           "request_path/request_path.py", "--rounds 9 --seconds 1", "--rounds 3 --seconds 0.4"),
    micro("operation_record", "printing a call's parameters", "bench_operation_record"),
    Benchmark("large_reply", "the record of a reply of 16 MB, beside marshalling it", ("bench_large_reply",),
              ("16", "9", JSON), ("16", "3", JSON)),
    micro("call_chain", "the span of a request", "bench_call_chain"),
    micro("span_transport", "handing a span over", "bench_span_transport"),
    script("ssl", "calls and connections by SSL beside those in clear, and clients beside trouble", "ssl/ssl_bench.py",
           "--rounds 5 --seconds 1", "--rounds 2 --seconds 0.6"),
    script("notification", "throughput and latency of events by number of consumers", "notification/notification.py",
           "--rounds 5 --events 16000", "--rounds 1 --events 4000 --buffered 20000"),
    script("service_backlog", "memory by events that wait in the notification service", "backlog/service_backlog.py",
           "--rounds 5 --limit 160000", "--rounds 3 --first 5000 --limit 20000"),
    script("agent_backlog", "memory by events that wait in an agent's buffer", "backlog/agent_backlog.py",
           "--rounds 5 --limit 640000", "--rounds 3 --limit 80000"),
    script("elements", "time and memory by elements in one reply, beside the plain ORB", "growth/elements.py",
           "--rounds 5 --calls 5 --limit 128000", "--rounds 3 --calls 3 --limit 16000"),
    script("sessions", "log-in time and memory by sessions", "growth/sessions.py",
           "--rounds 5 --limit 8192", "--rounds 3 --limit 128"),
    script("channels", "making, delivery rate and memory by channels", "growth/channels.py",
           "--rounds 5 --limit 4096", "--rounds 3 --events 1024 --first 16 --limit 128"),
)
