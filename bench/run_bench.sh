#!/usr/bin/env bash
# Runs the benchmarks of a build and makes one report of them.
# usage: bench/run_bench.sh BUILD_DIR [--quick] [--only NAME,...] [--list] [--help]
set -euo pipefail
exec python3 "$(dirname "${BASH_SOURCE[0]}")/run_bench.py" "$@"
