#!/usr/bin/env bash
# Builds the manual as HTML: docs/build_docs.sh OUTDIR makes OUTDIR/html/index.html out of the public headers and the
# pages of docs/. A broken link, an undocumented part of a public header and whatever else Doxygen warns of is an error.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
readonly ROOT
readonly REFERENCE="$ROOT/docs/reference"
# shellcheck source=scripts/build_lib.sh
source "$ROOT/scripts/build_lib.sh"

# The headers that an installation has, by the rule of cmake/QvInstallHeaders.cmake, and the platform's.
public_headers() {
  cd "$ROOT"
  grep -lE 'QV_API|QV_ORB_API' {time,logging,agent,request,notification,orb}/*.h
  printf '%s\n' logging/{pos_for_dbg,service_lookup}.h platform/*.h
}

# settings OUTDIR: what the Doxyfile leaves open
settings() {
  local image
  cat "$REFERENCE/Doxyfile"
  printf 'PROJECT_NUMBER = %s\n' "$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$ROOT/CMakeLists.txt")"
  printf 'OUTPUT_DIRECTORY = "%s"\n' "$1"
  printf 'STRIP_FROM_PATH = "%s"\nSTRIP_FROM_INC_PATH = "%s"\n' "$ROOT" "$ROOT"
  printf 'USE_MDFILE_AS_MAINPAGE = "%s/docs/index.md"\n' "$ROOT"
  printf 'FILTER_PATTERNS = "*.h=awk -f %s/header_filter.awk"\n' "$REFERENCE"
  printf 'FILTER_PATTERNS += "*.md=python3 -B %s/page_filter.py %s"\n' "$REFERENCE" "$ROOT"
  printf 'INPUT += "%s"\n' "$ROOT/docs/index.md"
  find "$ROOT/docs" -name '*.md' ! -path "$ROOT/docs/index.md" -printf 'INPUT += "%p"\n' | sort
  printf 'INPUT += "%s/namespaces.dox"\n' "$REFERENCE"
  public_headers | sort | sed "s#.*#INPUT += \"$ROOT/&\"#"
  for image in "$ROOT"/docs/*/; do
    printf 'IMAGE_PATH += "%s"\n' "$image"
  done
}

[[ "${1:-}" != --help && "${1:-}" != -h ]] || {
  sed -n '2,3s/^# //p' "$0"
  exit 0
}
[[ $# == 1 ]] || die "usage: docs/build_docs.sh OUTDIR"
need doxygen
mkdir -p "$1" || die "the directory $1 cannot be made"
OUT="$(cd "$1" && pwd)"
rm -rf "$OUT/html"

say "checking the links between the pages"
python3 -B "$ROOT/tests/integration/docs/links_test.py" "$ROOT" || die "links are broken; they are listed above"
say "building the manual"
settings "$OUT" >"$OUT/Doxyfile"
if ! doxygen "$OUT/Doxyfile" 2>"$OUT/warnings.txt" || [[ -s "$OUT/warnings.txt" ]]; then
  cat "$OUT/warnings.txt" >&2
  rm -rf "$OUT/html"
  die "the manual has faults, which are listed above; each has to be mended"
fi
say "the manual is $OUT/html/index.html"
