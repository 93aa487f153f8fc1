#!/usr/bin/env bash
# Builds the libraries of the last release and of HEAD, and compares their binary interfaces.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
readonly ROOT
# shellcheck source=scripts/build_lib.sh
source "$ROOT/scripts/build_lib.sh"
readonly TARGETS=(qv_corba_pub qv_orb qv_bundlemgr qv_selfgovernedutil qv_callchain)

export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"

usage() {
  cat <<'TEXT'
usage: check_abi.sh WORKDIR [BASE]

Compares HEAD with BASE, by default the last release: the newest tag v* that HEAD descends from. Builds lie in WORKDIR
and are taken again. Ends with 0 when programs built on BASE run on HEAD, or when there is no release yet.
TEXT
}

# run LOG COMMAND...: quietly, unless it fails.
run() {
  local log="$1"
  shift
  "$@" >"$log" 2>&1 || {
    tail -n 30 "$log" >&2
    die "this failed, with the messages above (all of them in $log): $*"
  }
}

# install_commit COMMIT: builds a commit's libraries and installs them in $work/COMMIT. Always in the same folders, so
# that a compiler cache knows what both commits have in common.
install_commit() {
  local launcher=() component
  [[ ! -e "$work/$1.complete" ]] || return 0
  rm -rf "$work/source" "$work/build" "${work:?}/$1"
  mkdir "$work/source"
  git -C "$ROOT" archive "$1" | tar -x -C "$work/source"
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  run "$work/configure.log" cmake -S "$work/source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DQV_BUILD_TESTS=OFF -DQV_BUILD_BENCH=OFF "${launcher[@]}"
  run "$work/build.log" cmake --build "$work/build" --target "${TARGETS[@]}"
  for component in runtime development; do
    run "$work/install.log" cmake --install "$work/build" --component "$component" --prefix "$work/$1"
  done
  touch "$work/$1.complete"
}

[[ "${1:-}" != --help && "${1:-}" != -h ]] || { usage; exit; }
[[ $# -ge 1 ]] || { usage >&2; exit 2; }
mkdir -p "$1" || die "the folder $1 cannot be made. Name another."
work="$(cd "$1" && pwd)"
base="${2:-$(git -C "$ROOT" describe --tags --abbrev=0 --match 'v*' 2>/dev/null || true)}"
if [[ -z "$base" ]]; then
  say "there is no release to compare with: no tag v* leads to HEAD"
  exit 0
fi
commit="$(git -C "$ROOT" rev-parse --verify --quiet "$base^{commit}")" || die "there is no commit \"$base\"."
head="$(git -C "$ROOT" rev-parse HEAD)"
for built in "$commit" "$head"; do
  say "building the libraries of $(git -C "$ROOT" describe --always --tags "$built")"
  install_commit "$built"
done
say "comparing"
"$ROOT/packaging/abi/compare_abi.sh" "$work/$commit" "$work/$head" "$base"
