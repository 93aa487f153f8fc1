#!/usr/bin/env python3
"""Run the benchmarks of a build and make one report of them.

Results lie in BUILD_DIR/bench-results: JSON per benchmark, report.html with all plots and figures, report.md with the main
ratios. A whole run takes some 13 minutes on two cores. A benchmark that fails is told in the report, and the others go
on; the exit code is then 1.
"""
import argparse
import datetime
import json
import pathlib
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from benchmarks import BENCHMARKS, HERE  # noqa: E402
from processes import end_tidily, end_with_parent  # noqa: E402
from report import machine  # noqa: E402
from report.__main__ import write_report  # noqa: E402
from report.plots import PlotError  # noqa: E402

PATIENCE = 1800  # seconds for one benchmark
ENDING = 20


def options_of(arguments):
    parser = argparse.ArgumentParser(prog="run_bench.sh", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, metavar="BUILD_DIR")
    parser.add_argument("--quick", action="store_true", help="a look at everything in some 3 minutes, no figures to quote")
    parser.add_argument("--only", metavar="NAME,...", help="these benchmarks alone")
    parser.add_argument("--list", action="store_true", help="print the names of the benchmarks")
    options = parser.parse_args(arguments)
    names = options.only.split(",") if options.only else [one.name for one in BENCHMARKS]
    known = {one.name for one in BENCHMARKS}
    unknown = [name for name in names if name not in known]
    if unknown:
        parser.error(f"there is no benchmark {', '.join(unknown)}; --list names them all")
    options.chosen = [one for one in BENCHMARKS if one.name in names]
    return options


def outcome(command):
    """None, or why it failed. What it prints goes where this program's output goes."""
    try:
        process = subprocess.Popen(command, stderr=subprocess.PIPE, text=True, preexec_fn=end_with_parent)
    except OSError as problem:
        return f"{command[0]} can't be run: {problem.strerror}; build it first (./run.sh bench does)"
    try:
        _, said = process.communicate(timeout=PATIENCE)
    except subprocess.TimeoutExpired:
        return f"it was not done after {PATIENCE} seconds"
    finally:
        if process.poll() is None:
            end(process)
    if process.returncode == 0:
        return None
    lines = [line for line in said.splitlines() if line.strip()]
    return lines[-1] if lines else f"it ended with {process.returncode}"


def end(process):
    """Lets it end what it has started, and kills it when it doesn't."""
    process.terminate()
    try:
        process.wait(ENDING)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def run(one, options, results):
    print(f"==> {one.name}: {one.what}", flush=True)
    file = results / f"{one.name}.json"
    file.unlink(missing_ok=True)
    begin = time.monotonic()
    error = outcome(one.line(options.build, file, options.quick))
    if error is None and not file.exists():
        error = "it wrote no results"
    seconds = time.monotonic() - begin
    print(f"    failed: {error}\n" if error else f"    done in {seconds:.0f} s\n", flush=True)
    return {"name": one.name, "seconds": seconds, "error": error}


def run_all(options, results):
    about = {"mode": "quick" if options.quick else "full",
             "started": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
             "machine": machine.describe(HERE.parent, options.build), "load_before": machine.load()}
    begin = time.monotonic()
    about["benchmarks"] = [run(one, options, results) for one in options.chosen]
    about["seconds"] = time.monotonic() - begin
    about["load_after"] = machine.load()
    (results / "run.json").write_text(json.dumps(about, indent=1) + "\n")
    return about


def main():
    options = options_of(sys.argv[1:])
    if options.list:
        for one in BENCHMARKS:
            print(f"{one.name:<17} {one.what}")
        return 0
    if not shutil.which("gnuplot"):
        sys.exit("run_bench: gnuplot is missing; install the package gnuplot-nox")
    end_tidily()
    options.build = options.build.resolve()
    results = options.build / "bench-results"
    results.mkdir(parents=True, exist_ok=True)
    about = run_all(options, results)
    try:
        page, summary = write_report(results)
    except PlotError as problem:
        sys.exit(f"run_bench: no report was made: {problem}")
    print(f"==> {about['seconds'] / 60:.1f} minutes; the report is {page}, its summary {summary}")
    return 1 if any(one["error"] for one in about["benchmarks"]) else 0


if __name__ == "__main__":
    sys.exit(main())
