# What the scripts of this folder share; to be sourced.
# shellcheck shell=bash

say() { printf '==> %s\n' "$*"; }

# One sentence on what went wrong and one on what to do; ends the script.
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# need PROGRAM PACKAGE...: ends the script when the program is missing
need() {
  command -v "$1" >/dev/null || die "$1 is missing. Install the package ${2:-$1}."
}

# How many compilers or programs run at a time.
jobs_at_once() { echo "${QV_JOBS:-$(nproc)}"; }

# source_root PATH: the absolute path of the tree to check
source_root() {
  [[ -f "$1/CMakePresets.json" ]] || die "$1 is not the top of the source tree. Name the folder with CMakePresets.json."
  (cd "$1" && pwd)
}

# configure ROOT PRESET [CMAKE ARGUMENT...]
configure() {
  local root="$1" preset="$2" launcher=()
  shift 2
  need cmake
  need ninja ninja-build
  if command -v ccache >/dev/null; then
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  say "configuring build/$preset"
  mkdir -p "$root/build/$preset"
  (cd "$root" && cmake --preset "$preset" "${launcher[@]}" "$@") >"$root/build/$preset/configure.log" 2>&1 || {
    cat "$root/build/$preset/configure.log" >&2
    die "configuring failed; the message above says why. If the folder was moved, delete build/$preset and try again."
  }
}

# build ROOT PRESET [TARGET...]
build() {
  local root="$1" preset="$2"
  shift 2
  say "building build/$preset"
  cmake --build "$root/build/$preset" --parallel "$(jobs_at_once)" ${1:+--target "$@"} ||
    die "the build failed; the first error above says why. If memory ran out, try QV_JOBS=1."
}
