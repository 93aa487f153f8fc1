#!/usr/bin/env bash
# Runs the benchmarks of a build and writes their JSON beside it.
# usage: bench/run_bench.sh BUILD_DIR [options of the benchmark]
set -euo pipefail
build=${1:?usage: bench/run_bench.sh BUILD_DIR}
shift
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mkdir -p "$build/bench-results"
echo "Request path: calls per second and server CPU per call, beside the plain ORB"
python3 "$here/request_path/request_path.py" "$build" --json "$build/bench-results/request_path.json" "$@"
