#!/usr/bin/env python3
"""Measure a notification service with more and more channels.

usage: channels.py BUILD_DIR [--rounds N] [--events N] [--first N] [--limit N] [--json FILE]

Each round starts a service once for best-effort and once for persistent channels. A client makes channels with one
consumer each until there are so many, twice as many at each step, then pushes events into one after the other. Making a
channel is compared with a plain call to the service; deliveries a second with those of the first step. Memory is what
the service occupies beyond what it did with one channel.
"""
import contextlib
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from event_programs import Programs  # noqa: E402
from sweep import print_costs, sweep  # noqa: E402
from sweep_program import run_sweep, sweep_arguments  # noqa: E402

KINDS = {"best effort": (), "persistent": ("persistent",)}


def started(programs, events, kind):
    @contextlib.contextmanager
    def start():
        with programs.service() as (service, factory):
            with programs.start("bench_channels", factory, events, *kind) as client:
                client.ask(1)
                empty = service.memory_kib()

                def measure(channels):
                    answer = client.ask(channels)
                    rss = service.memory_kib()
                    return {"rss_kib": rss, "empty_kib": empty, **answer,
                            "octets_per_channel": (rss - empty) * 1024 / (channels - 1),
                            "costs": {"making": answer["create_us"],
                                      "delivery": 1e6 / answer["deliveries_per_second"]}}
                yield measure
    return start


def measured(options):
    results = {}
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as folder:
        programs = Programs(options.build, folder)
        for name, kind in KINDS.items():
            print(f"channels, {name}")
            results[name] = sweep("channels", options.first, options.limit, options.rounds,
                                  started(programs, options.events, kind))
            print_costs(results[name], {"make us": ("create_us", 1), "connect us": ("connect_us", 1),
                                        "deliveries/s": ("deliveries_per_second", 1),
                                        "KiB per channel": ("octets_per_channel", 1 / 1024)})
    return results


if __name__ == "__main__":
    arguments = sweep_arguments(__doc__, "channels", 32, 4096)
    arguments.add_argument("--events", type=int, default=8192, help="pushed at each step")
    run_sweep(arguments, measured)
