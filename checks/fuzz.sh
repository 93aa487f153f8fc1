#!/usr/bin/env bash
# Runs the fuzz targets, each for a while and as many at a time as there are processors, and collects what they find.
set -euo pipefail
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=checks/checks_lib.sh
source "$HERE/checks_lib.sh"

usage() {
  cat <<'TEXT'
usage: fuzz.sh ROOT [SECONDS [NAMES]]

Builds the fuzz targets in ROOT/build/fuzz and runs each, or those named, for SECONDS (600) from the inputs in
tests/fuzz/corpus/NAME. Inputs that reach new code are kept in build/fuzz/found/NAME, and the next run starts from them
as well; inputs that crash, hang or leak are in build/fuzz/findings/NAME. Fails when there is one. What a target wrote is
in build/fuzz/NAME.log. QV_JOBS is how many run at a time; as many as there are processors unless given.
TEXT
}

case "${1:-}" in
  -h | --help)
    usage
    exit 0
    ;;
  '')
    usage >&2
    exit 2
    ;;
esac
ROOT="$(source_root "$1")"
SECONDS_EACH="${2:-600}"
NAMES=("${@:3}")
[[ "$SECONDS_EACH" =~ ^[1-9][0-9]*$ ]] || die "\"$SECONDS_EACH\" is no number of seconds. Give one, such as 600."
BUILD="$ROOT/build/fuzz"
CORPUS="$ROOT/tests/fuzz/corpus"

files_in() { find "$1" -type f 2>/dev/null | wc -l; }

# fuzz NAME: until the time is up, also beyond a finding
fuzz() {
  local name="$1" found="$BUILD/found/$1" findings="$BUILD/findings/$1" dictionary=()
  [[ ! -f "$ROOT/tests/fuzz/$name.dict" ]] || dictionary=("-dict=$ROOT/tests/fuzz/$name.dict")
  export ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1
  export LSAN_OPTIONS="suppressions=$ROOT/tests/lsan.supp:print_suppressions=0"
  "$BUILD/bin/fuzz_$name" -fork=1 -ignore_crashes=1 -ignore_ooms=1 -ignore_timeouts=1 -timeout=10 -rss_limit_mb=2048 \
    -max_total_time="$SECONDS_EACH" -artifact_prefix="$findings/" "${dictionary[@]}" \
    "$found" "$CORPUS/$name" >"$BUILD/$name.log" 2>&1
}

# The last progress line of a target's log: "#RUNS: cov: EDGES ft: …".
runs_of() { sed -nE 's/^#([0-9]+):? .*cov: [0-9]+ .*/\1/p' "$BUILD/$1.log" | tail -n 1; }
coverage_of() { sed -nE 's/^#[0-9]+:? .*cov: ([0-9]+) .*/\1/p' "$BUILD/$1.log" | tail -n 1; }

need clang++ clang
configure "$ROOT" fuzz
build "$ROOT" fuzz fuzzers
if [[ ${#NAMES[@]} == 0 ]]; then
  for folder in "$CORPUS"/*/; do
    NAMES+=("$(basename "$folder")")
  done
fi
for name in "${NAMES[@]}"; do
  [[ -x "$BUILD/bin/fuzz_$name" ]] || die "there is no fuzz target \"$name\". See tests/fuzz/CMakeLists.txt."
done

say "${#NAMES[@]} targets for $SECONDS_EACH seconds each, $(jobs_at_once) at a time"
declare -A before
for name in "${NAMES[@]}"; do
  mkdir -p "$BUILD/found/$name" "$BUILD/findings/$name"
  before[$name]="$(files_in "$BUILD/found/$name")"
done
export -f fuzz
export BUILD CORPUS ROOT SECONDS_EACH
# A finding is no reason to leave out the targets after it. The inner shell is to expand its argument.
# shellcheck disable=SC2016
printf '%s\n' "${NAMES[@]}" | xargs -P "$(jobs_at_once)" -I{} bash -c 'fuzz "$1" || true' _ {}

row() { printf '%-20s %12s %9s %8s %5s %9s\n' "$@"; }
table="$(row target runs coverage corpus new findings)"
total=0
for name in "${NAMES[@]}"; do
  [[ -n "$(runs_of "$name")" ]] || {
    tail -n 30 "$BUILD/$name.log" >&2
    die "fuzz_$name did not run; its message stands above."
  }
  findings="$(files_in "$BUILD/findings/$name")"
  total=$((total + findings))
  table+=$'\n'"$(row "$name" "$(runs_of "$name")" "$(coverage_of "$name")" "$(files_in "$CORPUS/$name")" \
    "$(($(files_in "$BUILD/found/$name") - before[$name]))" "$findings")"
done
printf '%s\n' "$table"
[[ "$total" == 0 ]] || die "$total findings in $BUILD/findings. Repeat one by bin/fuzz_NAME FILE, and mend its cause."
