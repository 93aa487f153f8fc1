#!/usr/bin/env python3
"""Measure what the seam and the library cost per request, beside the same servant on the plain ORB.

usage: request_path.py BUILD_DIR [--rounds N] [--seconds S] [--json FILE]

All servers run at the same time; only one is called at any moment. A round calls each of them once with 1 and once
with 4 client threads, in an order that turns from round to round, so that a slow spell of the machine hits all alike.
Ratios are taken within a round; the table shows their medians and the spread between the rounds.
"""
import argparse
import json
import pathlib
import statistics
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from processes import Failure, end_tidily  # noqa: E402
from servers import library_server, measure_calls, plain_server, seam_server  # noqa: E402

THREADS = (1, 4)
# The settings of the library's servers, beyond those that all share. Where operations are audited, every call is.
LIBRARY = {
    "library, log off": "",
    "library, log on": "bLogOperation = 1",
    "library, log and spans on": "bLogOperation = 1\n[platform]\ncall_chain = true",
    "library, log, spans, audit": "bLogOperation = 1\n[platform]\ncall_chain = true\nrisk_file = \"{folder}/risk.toml\"",
    "library, statistics on": "IsInterceptorEnabled = 1",
}
VARIANTS = ("plain ORB", "seam, empty interceptor", *LIBRARY)


def start(build, work, servers):
    """Adds each server to `servers` as soon as its process is there, so that the caller can end it whatever follows."""
    makers = {
        "plain ORB": lambda folder: plain_server(build, folder),
        "seam, empty interceptor":
            lambda folder: seam_server(build, folder),
    }
    for variant, settings in LIBRARY.items():
        makers[variant] = lambda folder, settings=settings: library_server(build, folder, settings.format(folder=folder))
    for number, (variant, make) in enumerate(makers.items()):
        folder = work / f"server{number}"
        folder.mkdir()
        (folder / "risk.toml").write_text("[risk]\nquery = 1\n")
        servers[variant] = make(folder)


def run_rounds(build, servers, rounds, seconds):
    samples = []
    for number in range(rounds):
        order = VARIANTS[number % len(VARIANTS):] + VARIANTS[:number % len(VARIANTS)]
        for threads in THREADS:
            row = {variant: measure_calls(build, servers[variant], threads, seconds) for variant in order}
            samples.append({"round": number, "threads": threads, "variants": row})
        print(f"round {number + 1} of {rounds} done", file=sys.stderr)
    return samples


def summary(samples):
    rows = []
    for threads in THREADS:
        for variant in VARIANTS:
            mine = [s["variants"] for s in samples if s["threads"] == threads]
            ratios = [r[variant]["calls_per_second"] / r[VARIANTS[0]]["calls_per_second"] for r in mine]
            added = [r[variant]["server_us_per_call"] - r[VARIANTS[0]]["server_us_per_call"] for r in mine]
            rows.append({
                "threads": threads, "variant": variant,
                "calls_per_second": statistics.median(r[variant]["calls_per_second"] for r in mine),
                "server_us_per_call": statistics.median(r[variant]["server_us_per_call"] for r in mine),
                "ratio": statistics.median(ratios), "ratio_min": min(ratios), "ratio_max": max(ratios),
                "added_us_per_call": statistics.median(added),
            })
    return rows


def print_table(rows):
    print(f"{'client threads':>14}  {'server':<27} {'calls/s':>9} {'CPU us/call':>12} {'added us':>9} "
          f"{'of plain':>9}  spread")
    for row in rows:
        print(f"{row['threads']:>14}  {row['variant']:<27} {row['calls_per_second']:>9.0f} "
              f"{row['server_us_per_call']:>12.2f} {row['added_us_per_call']:>+9.2f} {row['ratio']:>9.3f}  "
              f"{row['ratio_min']:.3f}-{row['ratio_max']:.3f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--seconds", type=float, default=1.0)
    parser.add_argument("--json", type=pathlib.Path)
    options = parser.parse_args()
    end_tidily()
    servers = {}
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as work:
        try:
            start(options.build.resolve(), pathlib.Path(work), servers)
            for server in servers.values():
                server.wait_until_ready()
            samples = run_rounds(options.build.resolve(), servers, options.rounds, options.seconds)
        except Failure as failure:
            sys.exit(f"request_path: {failure}")
        finally:
            for server in servers.values():
                server.stop()
    rows = summary(samples)
    print_table(rows)
    if options.json:
        options.json.write_text(json.dumps({"rows": rows, "samples": samples}, indent=2) + "\n")
        print(f"written to {options.json}")


if __name__ == "__main__":
    main()
