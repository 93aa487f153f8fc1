#!/usr/bin/env bash
# Builds everything with sanitizers, runs the tests, and counts what the sanitizers reported in any process, also in
# those whose output a test keeps to itself.
set -euo pipefail
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=checks/checks_lib.sh
source "$HERE/checks_lib.sh"

usage() {
  cat <<'TEXT'
usage: sanitize.sh ROOT asan|tsan [CTEST ARGUMENTS]

  asan  address, leaks, undefined behaviour
  tsan  data races, locks in different orders

Builds in ROOT/build/asan (tsan) and runs ctest there, as in sanitize.sh . tsan -R naming. The log is sanitize.log in
that folder, the reports are in its folder reports, one file per process. Fails when a test fails or there is a report.
QV_JOBS is how many compilers, and how many tests, run at a time; all processors unless given.
TEXT
}

if [[ "${1:-}" == -h || "${1:-}" == --help ]]; then
  usage
  exit 0
fi
[[ $# -ge 2 ]] || {
  usage >&2
  exit 2
}
ROOT="$(source_root "$1")"
PRESET="$2"
shift 2
[[ "$PRESET" == asan || "$PRESET" == tsan ]] || die "there is no sanitizer \"$PRESET\". Use asan or tsan."
BUILD="$ROOT/build/$PRESET"
REPORTS="$BUILD/reports"

# What the preset of ctest sets, and that reports go to files.
sanitizer_options() {
  export ASAN_OPTIONS="detect_stack_use_after_return=1:check_initialization_order=1:log_path=$REPORTS/asan"
  export LSAN_OPTIONS="suppressions=$ROOT/tests/lsan.supp:print_suppressions=0"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:log_path=$REPORTS/ubsan"
  export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions=$ROOT/tests/tsan.supp"
  TSAN_OPTIONS+=":log_path=$REPORTS/tsan"
}

# A report's first line, such as "ERROR: AddressSanitizer: …", "x.cpp:7:3: runtime error: …".
readonly REPORT='(ERROR: (Address|Leak)Sanitizer|WARNING: ThreadSanitizer|FATAL: ThreadSanitizer|runtime error):'

# The checks of undefined behaviour write to the standard error all the same, and so to ctest's log.
reports_of_all() { cat "$REPORTS"/* "$BUILD/sanitize.log" 2>/dev/null | grep -E "$REPORT" || true; }

show_reports() {
  local file
  for file in "$REPORTS"/*; do
    [[ -f "$file" ]] || continue
    printf -- '---- %s\n' "$file"
    head -n 40 "$file"
  done
  say "what was reported, and how often"
  reports_of_all | sed -E 's/^==[0-9]+==//; s/0x[0-9a-f]+/…/g; s/\(pid=[0-9]+\)//' | sort | uniq -c |
    sort -rn
}

configure "$ROOT" "$PRESET"
build "$ROOT" "$PRESET"
rm -rf "$REPORTS"
mkdir -p "$REPORTS"
sanitizer_options
say "testing"
failed=0
ctest --test-dir "$BUILD" --parallel "$(jobs_at_once)" --timeout 300 --output-on-failure --no-tests=error "$@" \
  >"$BUILD/sanitize.log" 2>&1 || failed=1
reports="$(reports_of_all | wc -l)"
[[ "$reports" == 0 ]] || show_reports
sed -n '/tests passed\|^No tests were found/,$p' "$BUILD/sanitize.log"
say "$reports reports of the sanitizers; log: $BUILD/sanitize.log"
[[ "$failed" == 0 && "$reports" == 0 ]]
