#!/usr/bin/env python3
"""Measure a demo agent with more and more sessions that are logged in at once.

usage: sessions.py BUILD_DIR [--rounds N] [--first N] [--limit N] [--json FILE]

Each round starts an agent and lets users log in until there are so many sessions, twice as many at each step. The password
of the sweep is one whose check takes next to nothing, so that what the session itself takes shows; what a log-in takes
with a password as qv_user keeps it is told as well. A ping of one of the sessions is what a log-in is compared with.
Memory is what the agent occupies beyond what it did after the log-ins that came before the sweep.
"""
import contextlib
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from growth.deployment import PASSWORD, QUICK_USERS, USUAL_COUNT, USUAL_USERS, demo_agent  # noqa: E402
from processes import Process  # noqa: E402
from sweep import print_costs, sweep  # noqa: E402
from sweep_program import run_sweep, sweep_arguments  # noqa: E402


def usual_log_ins(build, folder, factory):
    with Process([build / "bin/bench_sessions", factory, USUAL_USERS, PASSWORD], folder / "usual.log") as oss:
        return oss.ask(USUAL_COUNT)


def started(build, limit, usual):
    @contextlib.contextmanager
    def start():
        with tempfile.TemporaryDirectory(prefix="qv_bench_") as name:
            folder = pathlib.Path(name)
            with demo_agent(build, folder, limit) as (agent, factory):
                usual.append(usual_log_ins(build, folder, factory))
                with Process([build / "bin/bench_sessions", factory, QUICK_USERS, PASSWORD],
                             folder / "oss.log") as oss:
                    oss.ask(1)
                    empty = agent.memory_kib()

                    def measure(sessions):
                        answer = oss.ask(sessions)
                        rss = agent.memory_kib()
                        octets = (rss - empty) * 1024 / sessions
                        return {"rss_kib": rss, "empty_kib": empty, "octets_per_session": octets, **answer,
                                "costs": {"log-in": answer["login_p50_us"], "ping": answer["ping_p50_us"]}}
                    yield measure
    return start


def measured(options):
    usual = []
    result = sweep("sessions", options.first, options.limit, options.rounds,
                   started(options.build.resolve(), options.limit, usual))
    result["usual_log_ins"] = usual
    print_costs(result, {"log-in p50 us": ("login_p50_us", 1), "log-in p99 us": ("login_p99_us", 1),
                         "ping p50 us": ("ping_p50_us", 1), "KiB per session": ("octets_per_session", 1 / 1024)})
    print(f"a log-in with a password as qv_user keeps it: {usual[0]['login_p50_us'] / 1000:.0f} ms")
    return result


if __name__ == "__main__":
    run_sweep(sweep_arguments(__doc__, "sessions", 16, 8192), measured)
