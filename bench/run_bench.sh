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

echo
echo "SSL: calls and connections beside those in clear, and clients beside peers that make trouble"
python3 "$here/ssl/ssl_bench.py" "$build" --json "$build/bench-results/ssl.json"
echo
echo "Operation records: what the text of five parameters costs"
"$build/bin/bench_operation_record" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$build/bench-results/operation_record.json" --benchmark_out_format=json
echo
echo "Operation records: a reply of 16 MB"
"$build/bin/bench_large_reply" 16 9 "$build/bench-results/large_reply.json"
echo
echo "Call chain: what the span of a request costs"
"$build/bin/bench_call_chain" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$build/bench-results/call_chain.json" --benchmark_out_format=json
echo
echo "Events: the notification service beside pushing straight into the consumers, and the library beside both"
python3 "$here/notification/notification.py" "$build" --rounds 3 --json "$build/bench-results/notification.json"
