#!/usr/bin/env bash
# clang-tidy over our own sources: every finding of the profile in .clang-tidy is an error.
set -euo pipefail
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=checks/checks_lib.sh
source "$HERE/checks_lib.sh"

usage() {
  cat <<'TEXT'
usage: tidy.sh ROOT [--tests | --all | --changed [REF] | FILES]

  (nothing)        the product: libraries, programs, demo, tools, benchmarks
  --tests          the tests
  --all            both
  --changed [REF]  of both, what differs from REF (HEAD unless given), and what includes a header that does
  FILES            sources, by their paths below ROOT

What is found, each place once, is written to ROOT/build/tidy/findings.txt, and how often which check found something
is shown. Fails when there is a finding. QV_JOBS is how many files are read at a time; all processors unless given.
TEXT
}

export FINDING='^[^ ]+:[0-9]+:[0-9]+: (warning|error):'
# Folders whose sources are ours, without the tests.
readonly PRODUCT='agent|bench|demo|logging|notification|orb|platform|request|services|standalone|time|tools'

# sources PATTERN: what is compiled of the folders that match, by paths below ROOT
sources() {
  python3 - "$BUILD/compile_commands.json" "$ROOT" "$1" <<'PY'
import json, os, re, sys
database, root, pattern = sys.argv[1:]
files = {os.path.relpath(entry["file"], root) for entry in json.load(open(database))}
print("\n".join(sorted(file for file in files if re.match(f"({pattern})/", file))))
PY
}

# changed REF: sources that differ from it, and those that include a header that does
changed() {
  local all differing header candidates
  all="$(sources "$PRODUCT|tests")"
  # Files that git does not know yet differ from everything.
  differing="$(cd "$ROOT" && git diff --name-only --diff-filter=d "$1" -- && git ls-files --others --exclude-standard)" ||
    die "git cannot compare with \"$1\". Name a commit, a branch or a tag."
  mapfile -t candidates <<<"$all"
  {
    grep -Fx -f <(printf '%s\n' "$differing") <<<"$all" || true
    while read -r header; do
      (cd "$ROOT" && grep -lE "#include [<\"]([^>\"]*/)?${header##*/}[>\"]" -- "${candidates[@]}") || true
    done < <(grep -E '\.h$' <<<"$differing")
  } | sort -u
}

# Sources include what the IDL compiler makes; nothing else has to be built.
generate_stubs() {
  local stubs
  mapfile -t stubs < <(ninja -C "$BUILD" -t targets rule CUSTOM_COMMAND | grep '\.hh$')
  say "generating the stubs of ${#stubs[@]} IDL files"
  ninja -C "$BUILD" -j "$(jobs_at_once)" "${stubs[@]}" >"$BUILD/stubs.log" 2>&1 || {
    tail -n 20 "$BUILD/stubs.log" >&2
    die "the IDL compiler failed; its message stands above."
  }
}

# One file; what it says goes to a file of its own, since several run at a time.
check_one() {
  local out="$BUILD/tidy-out/${1//\//__}.txt"
  (cd "$ROOT" && clang-tidy -p "$BUILD" --quiet "$1") >"$out" 2>"$out.err" && return
  # Without a finding and without success, clang-tidy could not do its work.
  grep -qE "$FINDING" "$out" || printf '%s:1:1: error: clang-tidy failed, see %s [failure]\n' "$1" "$out.err" >>"$out"
}

# Each finding once: a header's is found again from each source that includes it. What is said of templates of others'
# headers, which some of our sources use, is left out.
collect() {
  cat "$BUILD"/tidy-out/*.txt | grep -E "$FINDING" | sed -e "s|^$ROOT/||" \
    -e 's/,-warnings-as-errors\]$/]/' | grep -v '^/' | sort -u
}

if [[ "${1:-}" == -h || "${1:-}" == --help ]]; then
  usage
  exit 0
fi
[[ $# -ge 1 ]] || {
  usage >&2
  exit 2
}
ROOT="$(source_root "$1")"
shift
BUILD="$ROOT/build/tidy"
need clang-tidy
configure "$ROOT" tidy
case "${1:-}" in
  '') files="$(sources "$PRODUCT")" ;;
  --tests) files="$(sources tests)" ;;
  --all) files="$(sources "$PRODUCT|tests")" ;;
  --changed) files="$(changed "${2:-HEAD}")" ;;
  -*) die "there is no option $1. Use --tests, --all or --changed." ;;
  *) files="$(printf '%s\n' "$@")" ;;
esac
[[ -n "$files" ]] || {
  say "nothing to check"
  exit 0
}
generate_stubs
say "checking $(wc -l <<<"$files") sources"
rm -rf "$BUILD/tidy-out"
mkdir -p "$BUILD/tidy-out"
export -f check_one
export BUILD ROOT
# shellcheck disable=SC2016  # the inner shell is to expand it
xargs -P "$(jobs_at_once)" -I{} bash -c 'check_one "$1"' _ {} <<<"$files"
collect >"$BUILD/findings.txt" || true
cat "$BUILD/findings.txt"
say "findings by check"
{ grep -oE '\[[a-z0-9A-Z.,+-]+\]$' "$BUILD/findings.txt" || true; } | sort | uniq -c | sort -rn
say "$(wc -l <"$BUILD/findings.txt") findings in $(wc -l <<<"$files") sources: $BUILD/findings.txt"
[[ ! -s "$BUILD/findings.txt" ]]
