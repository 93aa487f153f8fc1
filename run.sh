#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo, the tests or the benchmarks. Safe to repeat.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
readonly ROOT
readonly WORK_DIR="${QV_WORK_DIR:-$ROOT/build/work}"

# Debian packages that building, testing and running need.
readonly PACKAGES=(
  g++ cmake ninja-build ccache pkg-config python3
  libace-dev libomniorb4-dev libcos4-dev omniidl omniorb omniorb-idl omniorb-nameserver
  libtomlplusplus-dev libspdlog-dev libcli11-dev libsodium-dev libsqlite3-dev libjsoncpp-dev libcurl4-openssl-dev
  libssl-dev openssl
  libgtest-dev libgmock-dev libbenchmark-dev
)

say() { printf '==> %s\n' "$*"; }

# One sentence on what went wrong and one on what to do; ends the script.
die() {
  printf 'run.sh: %s\n' "$*" >&2
  exit 1
}

usage() {
  cat <<'TEXT'
usage: ./run.sh COMMAND [ARGUMENTS]

  demo          build, then show OSSs that log in, read, change, are turned away and receive events, also through an
                outage of the notification service, and what the agent recorded of it; with --ssl all of that goes
                by SSL with certificates made on the spot, and clients are shown that are turned away for theirs
  agent         build, then leave the demo agent running until Ctrl-C, by SSL with --ssl
  test          build everything and run all tests; arguments go to ctest, as in ./run.sh test -R naming
  bench         build optimised and run the benchmarks; arguments go to them
  install-deps  only install the packages that are missing
  help          print this text

Each command first installs missing packages with apt, as root or through sudo.
Builds lie in build/, and so does what the demo and the agent write; set QV_WORK_DIR to have that elsewhere.
TEXT
}

is_installed() {
  [[ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

as_root() {
  if [[ "$(id -u)" == 0 ]]; then
    "$@"
  else
    sudo "$@"
  fi
}

install_deps() {
  command -v dpkg-query >/dev/null ||
    die "this is not a Debian system, so packages cannot be installed here. Install the counterparts of: ${PACKAGES[*]}"
  local missing=() package
  for package in "${PACKAGES[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
  if [[ ${#missing[@]} == 0 ]]; then
    say "all ${#PACKAGES[@]} packages are installed"
    return
  fi
  if [[ "$(id -u)" != 0 ]] && ! command -v sudo >/dev/null; then
    die "these packages are missing and this user may not install them: ${missing[*]}. Run ./run.sh install-deps as root."
  fi
  say "installing ${missing[*]}"
  as_root apt-get update ||
    die "the package lists could not be fetched. Check the network and the package sources, then run this again."
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends "${missing[@]}" ||
    die "installing failed; apt's message above says why. This needs Debian 12 or later: ${missing[*]}"
}

# Compiling takes up to 1.5 GB per job; more jobs than fit into memory would make the machine swap.
build_jobs() {
  local cores memory_kb fitting
  cores="$(nproc)"
  memory_kb="$(awk '/^MemAvailable:/ { print $2 }' /proc/meminfo)"
  fitting=$((${memory_kb:-0} / 1500000))
  ((fitting >= 1)) || fitting=1
  echo $((fitting < cores ? fitting : cores))
}

# build PRESET [TARGET...]
build() {
  local preset="$1" launcher=()
  shift
  if command -v ccache >/dev/null; then
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  mkdir -p "$ROOT/build" || die "the directory $ROOT/build cannot be made. Give this user the right to write there."
  say "configuring build/$preset"
  cmake --preset "$preset" "${launcher[@]}" >"$ROOT/build/$preset-configure.log" 2>&1 || {
    cat "$ROOT/build/$preset-configure.log" >&2
    die "configuring failed; the message above says why. If the folder was moved, delete build/$preset and try again."
  }
  say "building build/$preset"
  cmake --build --preset "$preset" --parallel "${QV_JOBS:-$(build_jobs)}" ${1:+--target "$@"} ||
    die "the build failed; the first error above says why. If memory ran out, try QV_JOBS=1 ./run.sh ..."
}

# build_programs: what the demo and the agent run, without tests and benchmarks.
build_programs() {
  local targets=() folder
  for folder in standalone services demo tools; do
    [[ ! -f "$ROOT/$folder/CMakeLists.txt" ]] || targets+=("$folder/all")
  done
  build default "${targets[@]}"
}

make_work_dir() {
  mkdir -p "$WORK_DIR" || die "the directory $WORK_DIR cannot be made. Name another in QV_WORK_DIR."
}

# run_script PATH ARGUMENTS...
run_script() {
  local script="$ROOT/$1"
  shift
  [[ -x "$script" ]] || die "$script is missing or not executable; restore it from the repository."
  exec "$script" "$@"
}

main() {
  local command="${1:-help}"
  [[ $# == 0 ]] || shift
  cd "$ROOT"
  case "$command" in
    help | -h | --help)
      usage
      return
      ;;
    demo | agent | test | bench | install-deps) ;;
    *)
      die "there is no command \"$command\". Use demo, agent, test, bench, install-deps or help."
      ;;
  esac

  install_deps
  case "$command" in
    demo)
      build_programs
      make_work_dir
      run_script demo/run_demo.sh "$ROOT/build/default" "$WORK_DIR" "$@"
      ;;
    agent)
      build_programs
      make_work_dir
      run_script demo/run_agent.sh "$ROOT/build/default" "$WORK_DIR" "$@"
      ;;
    test)
      build default
      say "testing"
      exec ctest --preset default "$@"
      ;;
    bench)
      build bench bench/all
      run_script bench/run_bench.sh "$ROOT/build/bench" "$@"
      ;;
  esac
}

main "$@"
