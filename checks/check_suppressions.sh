#!/usr/bin/env bash
# Whether each suppression of the sanitizers and of memcheck, and each NOLINT, has its reason: a suppression in the
# comment above it or above its neighbours, a NOLINT behind it, after a colon.
set -euo pipefail
usage() { echo "usage: check_suppressions.sh ROOT"; }
case "${1:-}" in
  --help | -h) usage; exit ;;
  '' | -*) usage >&2; exit 2 ;;
esac
ROOT="$1"
cd "$ROOT"

# Suppressions of memcheck are in braces; the others are lines of KIND:PATTERN.
without_reason() {
  awk 'FNR == 1 || /^$/ { reason = 0; next }
    /^#/ { reason = 1; next }
    (/^{/ || /^[a-z_]+:/) && !reason { print FILENAME ":" FNR ": " $0 " has no reason above it" }' "$@"
}

bare_nolints() {
  grep -rnE 'NOLINT' --include='*.cpp' --include='*.h' agent bench demo logging notification orb platform request \
    services standalone tests time tools | grep -vE 'NOLINTEND|NOLINT[A-Z]*\([a-zA-Z0-9.,* -]+\): .+' |
    sed 's/$/  <- names no check, or gives no reason/' || true
}

faults="$(
  without_reason tests/*.supp checks/*.supp
  bare_nolints
)"
[[ -z "$faults" ]] || {
  printf '%s\n' "$faults" >&2
  exit 1
}
echo "every suppression has its reason"
