#!/usr/bin/env bash
# The exported symbols of the shared libraries against the lists recorded beside this script.
set -euo pipefail

HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=scripts/build_lib.sh
source "$HERE/../../scripts/build_lib.sh"
readonly LIBRARIES=(libqv_corba_pub.so libqv_orb.so libqv_bundlemgr.so libqv_selfgovernedutil.so libqv_callchain.so)

usage() {
  cat <<'TEXT'
usage: symbols.sh --check LIBDIR [LISTS]    compare; fails when a symbol is gone, or when a new one isn't recorded
       symbols.sh --record LIBDIR [LISTS]   write the lists anew, from a build with GCC and without sanitizers

LIBDIR holds the shared libraries, LISTS one file per library: packaging/abi/symbols, unless given.
TEXT
}

# exported LIBRARY: one line per symbol, with the version behind it. What is exported for this tree's tests alone has a
# version of its own and may come and go.
exported() {
  nm --dynamic --defined-only --with-symbol-versions "$1" | awk '$2 != "A" && $3 !~ /_PRIVATE$/ { print $3 }' | LC_ALL=C sort -u
}

# named: symbols of standard input in C++'s spelling, indented.
named() {
  sed 's/@.*//' | c++filt | LC_ALL=C sort -u | sed 's/^/  /'
}

record() {
  local library
  mkdir -p "$lists" || die "the folder $lists cannot be made."
  for library in "${present[@]}"; do
    exported "$libdir/$library" >"$lists/${library%.so}.txt"
    printf '==> %s: %s symbols recorded\n' "$library" "$(wc -l <"$lists/${library%.so}.txt")"
  done
}

# check_library LIBRARY LIST: fails when they differ, and says how.
check_library() {
  local now gone added
  now="$(exported "$libdir/$1")"
  gone="$(LC_ALL=C comm -13 <(printf '%s\n' "$now") "$2")"
  added="$(LC_ALL=C comm -23 <(printf '%s\n' "$now") "$2")"
  if [[ -n "$gone" ]]; then
    printf 'symbols.sh: %s no longer exports what programs built on it need:\n' "$1"
    named <<<"$gone"
    printf 'Put it back; or, in a release with another SOVERSION, record the lists anew.\n'
  fi >&2
  if [[ -n "$added" ]]; then
    printf 'symbols.sh: %s exports what its list does not have:\n' "$1"
    named <<<"$added"
    printf 'If it is meant to be public, record it: packaging/abi/symbols.sh --record %s\n' "$libdir"
  fi >&2
  [[ -z "$gone$added" ]]
}

check() {
  local library failed=0
  for library in "${present[@]}"; do
    [[ -f "$lists/${library%.so}.txt" ]] || die "$lists has no list for $library. Record it with --record."
    if check_library "$library" "$lists/${library%.so}.txt"; then
      printf '==> %s: as recorded\n' "$library"
    else
      failed=1
    fi
  done
  return "$failed"
}

case "${1:-}" in
  --check | --record) action="${1#--}" ;;
  --help | -h)
    usage
    exit
    ;;
  *)
    usage >&2
    exit 2
    ;;
esac
[[ $# -ge 2 ]] || die "$1 needs the folder with the libraries."
libdir="$2"
lists="${3:-$HERE/symbols}"
present=()
for library in "${LIBRARIES[@]}"; do
  [[ ! -e "$libdir/$library" ]] || present+=("$library")
done
[[ ${#present[@]} -gt 0 ]] || die "$libdir holds none of the libraries. Build them, and name the folder they are in."
"$action"
