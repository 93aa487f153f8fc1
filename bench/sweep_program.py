"""The command line that all sweeps have."""
import argparse
import json
import pathlib
import sys

from processes import Failure, end_tidily


def sweep_arguments(description, units, first, limit):
    """A parser of it; a sweep may add options of its own."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--first", type=int, default=first, help=f"{units} at the first step")
    parser.add_argument("--limit", type=int, default=limit, help=f"{units} at the last step, at most")
    parser.add_argument("--json", type=pathlib.Path)
    return parser


def run_sweep(parser, measure):
    """measure(options) prints its table and returns the result, which goes to the file that --json names."""
    options = parser.parse_args()
    if not (options.build / "bin").is_dir():
        parser.error(f"{options.build} is no build of the benchmarks: it has no folder bin")
    end_tidily()
    try:
        result = measure(options)
    except Failure as failure:
        sys.exit(f"{parser.prog}: {failure}")
    if options.json:
        options.json.write_text(json.dumps(result, indent=1) + "\n")
