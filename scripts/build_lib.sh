# How the scripts talk to people and build a preset; to be sourced.
# shellcheck shell=bash

say() { printf '==> %s\n' "$*"; }

# One sentence on what went wrong and one on what to do; ends the script.
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# need PROGRAM [PACKAGE]: ends the script when the program is missing
need() {
  command -v "$1" >/dev/null || die "$1 is missing. Install the package ${2:-$1}."
}

# How many compilers or programs run at a time. Compiling takes up to 1.5 GB per job; more jobs than fit into memory would
# make the machine swap.
jobs_at_once() {
  local cores memory_kb fitting
  cores="$(nproc)"
  memory_kb="$(awk '/^MemAvailable:/ { print $2 }' /proc/meminfo)"
  fitting=$((${memory_kb:-0} / 1500000))
  ((fitting >= 1)) || fitting=1
  echo "${QV_JOBS:-$((fitting < cores ? fitting : cores))}"
}

# configure ROOT PRESET [CMAKE ARGUMENT...]
configure() {
  local root="$1" preset="$2" launcher=() log
  shift 2
  need cmake
  need ninja ninja-build
  if command -v ccache >/dev/null; then
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
    # What a file includes is learnt from the compiler: a file that is not in the cache is preprocessed once, not twice.
    export CCACHE_DEPEND="${CCACHE_DEPEND:-1}"
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  say "configuring build/$preset"
  mkdir -p "$root/build/$preset" || die "the directory $root/build cannot be made. Give this user the right to write there."
  log="$root/build/$preset/configure.log"
  (cd "$root" && cmake --preset "$preset" "${launcher[@]}" "$@") >"$log" 2>&1 || {
    cat "$log" >&2
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
