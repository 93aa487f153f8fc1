#!/usr/bin/env bash
# Builds the libraries of the last release and of HEAD, and compares their binary interfaces.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
readonly ROOT
readonly TARGETS=(qv_corba_pub qv_orb qv_bundlemgr qv_selfgovernedutil qv_callchain)

usage() {
  cat <<'TEXT'
usage: check_abi.sh WORKDIR [BASE]

Compares HEAD with BASE, by default the last release: the newest tag v* that HEAD descends from. Builds lie in WORKDIR
and are taken again. Ends with 0 when programs built on BASE run on HEAD, or when there is no release yet.
TEXT
}

say() { printf '==> %s\n' "$*"; }

die() {
  printf 'check_abi.sh: %s\n' "$*" >&2
  exit 1
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

# install_commit COMMIT: builds a commit's libraries and installs them in $work/COMMIT/prefix.
install_commit() {
  local dir="$work/$1"
  [[ ! -e "$dir/complete" ]] || return 0
  rm -rf "$dir"
  mkdir -p "$dir/source"
  git -C "$ROOT" archive "$1" | tar -x -C "$dir/source"
  local launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  run "$dir/configure.log" cmake -S "$dir/source" -B "$dir/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DQV_BUILD_TESTS=OFF -DQV_BUILD_BENCH=OFF "${launcher[@]}"
  run "$dir/build.log" cmake --build "$dir/build" --target "${TARGETS[@]}"
  local component
  for component in runtime development; do
    run "$dir/install.log" cmake --install "$dir/build" --component "$component" --prefix "$dir/prefix"
  done
  touch "$dir/complete"
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
"$ROOT/packaging/abi/compare_abi.sh" "$work/$commit/prefix" "$work/$head/prefix" "$base"
