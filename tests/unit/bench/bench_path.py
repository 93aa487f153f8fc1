"""Lets the tests find the sources of the benchmarks."""
import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, os.environ.get("QV_BENCH", str(ROOT / "bench")))
