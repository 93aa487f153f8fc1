#!/usr/bin/env python3
"""Measure the memory of events that wait in an agent's buffer while its event channel is out of service.

usage: agent_backlog.py BUILD_DIR [--rounds N] [--first N] [--limit N] [--json FILE]

Each round starts an agent that has no notification service and pushes until so many events wait, twice as many at each
step. Memory is what the agent occupies beyond what it did before the first event; the same event as octets (CDR) is
what it is compared with.
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


def started(programs, limit):
    @contextlib.contextmanager
    def start():
        with programs.agent("backlog", limit, programs.folder / "no-service.ior", 2 * limit) as agent:
            agent.ask(1)
            empty = agent.memory_kib()

            def measure(events):
                answer = agent.ask(events)
                rss = agent.memory_kib()
                octets = (rss - empty) * 1024 / events
                return {"rss_kib": rss, "empty_kib": empty, "octets_per_event": octets, **answer,
                        "costs": {"memory": octets, "push": answer["push_us"]}}
            yield measure
    return start


def measured(options):
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as folder:
        programs = Programs(options.build, folder)
        result = sweep("events", options.first, options.limit, options.rounds, started(programs, options.limit))
        result["event_octets"] = int(programs.line_of("bench_supplier", "size"))
    print_costs(result, {"MiB": ("rss_kib", 1 / 1024), "octets per event": ("octets_per_event", 1),
                         "push us": ("push_us", 1)})
    print(f"the event as CDR has {result['event_octets']} octets")
    return result


if __name__ == "__main__":
    run_sweep(sweep_arguments(__doc__, "events that wait", 10000, 640000), measured)
