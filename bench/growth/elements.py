#!/usr/bin/env python3
"""Measure replies of more and more elements, beside the same servant on the plain ORB.

usage: elements.py BUILD_DIR [--rounds N] [--calls N] [--first N] [--limit N] [--json FILE]

The elements are made before a call, and the reply only lends them: what is measured is what ORB and library do with a
long reply. Each round starts for each number of elements all servers anew, and calls them one after the other. Time is
that of a whole call by a client in a process of its own; memory is the most that the server occupied during the calls
beyond what it did before.
"""
import contextlib
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from processes import Failure, end_with_parent  # noqa: E402
from servers import library_server, plain_server, seam_server  # noqa: E402
from sweep import print_costs, sweep  # noqa: E402
from sweep_program import run_sweep, sweep_arguments  # noqa: E402

# The plain ORB takes 2 MB by default; the seam sets its own limit.
PLAIN_LIMIT = ("-ORBgiopMaxMsgSize", "1073741824")
MAKERS = {
    "plain": lambda build, folder: plain_server(build, folder, *PLAIN_LIMIT),
    "seam": seam_server,
    "log off": lambda build, folder: library_server(build, folder, ""),
    "log on": lambda build, folder: library_server(build, folder, "bLogOperation = 1"),
}


def call(build, server, elements, calls):
    answer = subprocess.run([build / "bin/bench_list_client", str(server.reference), str(elements), str(calls)],
                            capture_output=True, text=True, timeout=600, preexec_fn=end_with_parent)
    if answer.returncode != 0:
        raise Failure(answer.stderr.strip() or "the client failed")
    return json.loads(answer.stdout) if calls > 0 else None


def measure_variant(build, work, variant, elements, calls):
    with tempfile.TemporaryDirectory(dir=work) as folder:
        server = MAKERS[variant](build, pathlib.Path(folder))
        try:
            server.wait_until_ready()
            call(build, server, elements, 0)
            before = server.memory_kib()
            server.reset_peak()
            answer = call(build, server, elements, calls)
            return {"ms": statistics.median(answer["ms"]), "server_ms": answer["server_seconds"] * 1000 / calls,
                    "memory_kib": server.peak_kib() - before}
        finally:
            server.stop()


def started(build, work, calls):
    @contextlib.contextmanager
    def start():
        def measure(elements):
            sample = {variant: measure_variant(build, work, variant, elements, calls) for variant in MAKERS}
            costs = {variant: sample[variant]["ms"] / elements for variant in MAKERS}
            return {**sample, "costs": costs}
        yield measure
    return start


def print_table(result):
    flat = [[{"units": sample["units"], **{v: sample[v]["ms"] for v in MAKERS},
              "more": (sample["log on"]["memory_kib"] - sample["plain"]["memory_kib"]) / 1024}
             for sample in samples] for samples in result["rounds"]]
    print_costs({**result, "rounds": flat},
                {**{f"{v} ms": (v, 1) for v in MAKERS}, "log on: more MiB": ("more", 1)})


def measured(options):
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as work:
        result = sweep("elements", options.first, options.limit, options.rounds,
                       started(options.build.resolve(), work, options.calls))
    print_table(result)
    return result


if __name__ == "__main__":
    arguments = sweep_arguments(__doc__, "elements", 1000, 128000)
    arguments.add_argument("--calls", type=int, default=5, help="calls of each server at each step")
    run_sweep(arguments, measured)
