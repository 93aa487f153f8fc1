#!/usr/bin/env bash
# Whether programs built on one installation of the libraries run on another.
set -euo pipefail

HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
readonly HERE
# shellcheck source=scripts/build_lib.sh
source "$HERE/../../scripts/build_lib.sh"

usage() {
  cat <<'TEXT'
usage: compare_abi.sh OLD NEW [NAME]

OLD and NEW are prefixes of installations with debugging information: headers in include/, libraries below lib/. Compares
each shared library of OLD with the one of that name in NEW, as far as the headers make it public. NAME is what OLD is
called in messages. Ends with 0 when what was built on OLD runs on NEW.
TEXT
}

# what_broke REPORT: the names in abidiff's report of what was removed or changed, in one line.
what_broke() {
  sed -nE \
    -e "s/^ *\[D\] '(function|method|variable)? ?(.*)' .*\{.*\}$/removed: \2/p" \
    -e "s/^ *\[D\] '(function|method|variable)? ?(.*)'.*$/removed: \2/p" \
    -e "s/^ *\[D\] ([^ ']+).*$/removed: \1/p" \
    -e "s/^ *'(class|struct|union|enum|typedef) ([^']*) at [^']*' changed:$/changed: \1 \2/p" \
    -e "s/^ *\[C\] '(function|method|variable) (.*)' at .*$/changed: \2/p" \
    "$1" | awk '!seen[$0]++' | head -n 20 | paste --serial --delimiters=';' | sed 's/;/; /g'
}

# compare LIBRARY: fails when programs built on the old one don't run on the new one.
compare() {
  local name="${1##*/}" other status=0
  other="$(find "$new" -name "$name" | head -n 1)"
  if [[ -z "$other" ]]; then
    printf 'compare_abi.sh: %s is gone, so what was built on %s no longer starts.\n' "$name" "$old_name" >&2
    return 1
  fi
  abidiff --suppressions "$HERE/private.abignore" --leaf-changes-only --no-added-syms --drop-private-types --headers-dir1 "$old/include" \
    --headers-dir2 "$new/include" "$1" "$other" >"$report" 2>&1 || status=$?
  if ((status == 0)); then
    printf '==> %s: compatible with %s\n' "$name" "$old_name"
    return 0
  fi
  cat "$report"
  ((status & 3)) && die "abidiff could not compare $name; its message is above."
  printf 'compare_abi.sh: %s breaks programs built on %s. %s. Undo that, or release it under another SOVERSION.\n' \
    "$name" "$old_name" "$(what_broke "$report")" >&2
  return 1
}

[[ "${1:-}" != --help && "${1:-}" != -h ]] || { usage; exit; }
[[ $# -ge 2 ]] || { usage >&2; exit 2; }
need abidiff abigail-tools
old="$1"
new="$2"
old_name="${3:-$old}"
# Of a versioned library there is also the link that the linker uses: not that one.
mapfile -t libraries < <(find "$old" \( -name '*.so.[0-9]' -o -name '*.so' ! -type l \) | sort)
[[ ${#libraries[@]} -gt 0 ]] || die "$old holds no shared library."
report="$(mktemp)"
trap 'rm -f "$report"' EXIT
failed=0
for library in "${libraries[@]}"; do
  compare "$library" || failed=1
done
exit "$failed"
