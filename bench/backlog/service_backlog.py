#!/usr/bin/env python3
"""Measure the memory of events that wait in the notification service for a consumer that never answers.

usage: service_backlog.py BUILD_DIR [--rounds N] [--first N] [--limit N] [--json FILE]

Each round starts a service with one channel and one consumer that hangs, and pushes until so many events wait, twice as
many at each step. Memory is what the service occupies beyond what it did with the consumer connected; the same event as
octets (CDR) is what it is compared with. At the end the channel is destroyed, and what the service then still occupies
is told.
"""
import contextlib
import pathlib
import sys
import tempfile
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from event_programs import Programs  # noqa: E402
from sweep import print_costs, sweep  # noqa: E402
from sweep_program import run_sweep, sweep_arguments  # noqa: E402

SETTLING = 10


class Backlog:
    """A service whose only consumer hangs."""

    def __init__(self, programs, service, channel):
        self.programs, self.service, self.channel = programs, service, channel
        self.waiting = 0
        self.empty_kib = service.memory_kib()

    def grow_to(self, events):
        pushed = self.programs.push(events - self.waiting, 0, [self.channel])
        self.waiting = events
        rss = self.service.memory_kib()
        octets = (rss - self.empty_kib) * 1024 / events
        return {"rss_kib": rss, "empty_kib": self.empty_kib, "octets_per_event": octets, "push_p50_us": pushed["p50_us"],
                "push_p99_us": pushed["p99_us"], "costs": {"memory": octets, "push": pushed["p50_us"]}}


def settled_kib(service):
    """What the service occupies once that no longer falls."""
    last = service.memory_kib()
    deadline = time.monotonic() + SETTLING
    while time.monotonic() < deadline:
        time.sleep(0.5)
        now = service.memory_kib()
        if now == last:
            break
        last = now
    return last


def started(programs, limit, left):
    @contextlib.contextmanager
    def start():
        # The consumer's call lasts longer than the benchmark; no limit is in the way.
        options = ("--call-timeout", 3600000, "--consumer-queue", 2 * limit, "--channel-queue", 2 * limit,
                   "--channel-memory", 100000)
        with programs.service(*options) as (service, factory):
            channel = programs.make_channel(factory)
            with programs.start("bench_consumers", 0, 1, channel, "hung") as consumer:
                consumer.lines_until("ready")
                programs.push(1, 0, [channel])
                backlog = Backlog(programs, service, channel)
                yield backlog.grow_to
                full = service.memory_kib()
            programs.line_of("bench_supplier", "destroy", channel)
            left.append({"empty_kib": backlog.empty_kib, "full_kib": full, "destroyed_kib": settled_kib(service)})
    return start


def measured(options):
    left = []
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as folder:
        programs = Programs(options.build, folder)
        result = sweep("events", options.first, options.limit, options.rounds,
                       started(programs, options.limit, left))
        result["event_octets"] = int(programs.line_of("bench_supplier", "size"))
    result["left"] = left
    print_costs(result, {"MiB": ("rss_kib", 1 / 1024), "octets per event": ("octets_per_event", 1),
                         "push p50 us": ("push_p50_us", 1)})
    print(f"the event as CDR has {result['event_octets']} octets; once the channel is gone, the service occupies "
          f"{left[-1]['destroyed_kib'] / 1024:.0f} MiB of {left[-1]['full_kib'] / 1024:.0f}")
    return result


if __name__ == "__main__":
    run_sweep(sweep_arguments(__doc__, "events that wait", 10000, 320000), measured)
