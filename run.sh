#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo, the tests or the benchmarks. Safe to repeat.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
readonly ROOT
# shellcheck source=scripts/build_lib.sh
source "$ROOT/scripts/build_lib.sh"
readonly WORK_DIR="${QV_WORK_DIR:-$ROOT/build/work}"

# Debian packages that building and running need.
readonly PACKAGES=(
  g++ cmake ninja-build ccache pkg-config python3
  libace-dev libomniorb4-dev libcos4-dev omniidl omniorb omniorb-idl omniorb-nameserver
  libtomlplusplus-dev libspdlog-dev libcli11-dev libsodium-dev libsqlite3-dev libjsoncpp-dev libcurl4-openssl-dev
  libssl-dev openssl libsystemd-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)

# What a command needs beyond them.
packages_of() {
  case "$1" in
    test | asan | tsan) echo doxygen shellcheck abigail-tools ;;
    docs) echo doxygen ;;
    packages) echo dpkg-dev debhelper lintian fakeroot systemd man-db doxygen ;;
    abi) echo abigail-tools git ;;
    valgrind) echo valgrind ;;
    tidy) echo clang-tidy clang-tools ;;
    fuzz) echo clang ;;
    faults) echo iproute2 faketime procps ;;
    bench) echo gnuplot-nox ;;
  esac
}

usage() {
  cat <<'TEXT'
usage: ./run.sh COMMAND [ARGUMENTS]

  demo          build, then show OSSs that log in, read, change, are turned away and receive events, also through an
                outage of the notification service, and what the agent recorded of it; with --ssl all of that goes
                by SSL with certificates made on the spot, and clients are shown that are turned away for theirs
  agent         build, then leave the demo agent running until Ctrl-C, by SSL with --ssl
  test          build everything and run all tests; arguments go to ctest, as in ./run.sh test -R naming
  docs          build the manual as HTML, into build/docs
  packages      build the Debian packages, check them, install them into a throw-away system and remove them again
  bench         build optimised, run all benchmarks (13 minutes; --quick: 3) and write one report of them
  faults        run agent, services and OSSs on three hosts of network namespaces through a campaign of faults; needs
                root; --quick, --minutes N, --seed N
  asan, tsan    build and run all tests under the address and undefined-behaviour sanitizers, under the thread
                sanitizer; arguments go to ctest
  valgrind      run the long-running programs under valgrind
  tidy          run clang-tidy over the sources
  fuzz          run each fuzz target for ten minutes; ./run.sh fuzz SECONDS [TARGET...] for another time, for some
  abi           compare the library's binary interface with that of the last release
  install-deps  only install the packages that are missing; with COMMAND... those of these commands as well
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

# install_deps COMMAND...
install_deps() {
  local needed=("${PACKAGES[@]}") more=() missing=() command package
  for command in "$@"; do
    read -ra more <<<"$(packages_of "$command")"
    needed+=("${more[@]}")
  done
  command -v dpkg-query >/dev/null ||
    die "this is not a Debian system, so packages cannot be installed here. Install the counterparts of: ${needed[*]}"
  for package in "${needed[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
  if [[ ${#missing[@]} == 0 ]]; then
    say "all ${#needed[@]} packages are installed"
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

# build_preset PRESET [TARGET...]
build_preset() {
  configure "$ROOT" "$1"
  build "$ROOT" "$@"
}

# build_programs: what the demo and the agent run, without tests and benchmarks.
build_programs() {
  local targets=() folder
  for folder in standalone services demo tools; do
    [[ ! -f "$ROOT/$folder/CMakeLists.txt" ]] || targets+=("$folder/all")
  done
  build_preset default "${targets[@]}"
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
    install-deps)
      install_deps "$@"
      return
      ;;
    demo | agent | test | docs | packages | bench | faults | asan | tsan | valgrind | tidy | fuzz | abi) ;;
    *)
      die "there is no command \"$command\". ./run.sh help lists them."
      ;;
  esac
  install_deps "$command"
  "run_${command}" "$@"
}

run_demo() {
  build_programs
  make_work_dir
  run_script demo/run_demo.sh "$ROOT/build/default" "$WORK_DIR" "$@"
}

run_agent() {
  build_programs
  make_work_dir
  run_script demo/run_agent.sh "$ROOT/build/default" "$WORK_DIR" "$@"
}

run_test() {
  build_preset default
  say "testing"
  # Tests wait more than they compute: one more than there are processors.
  exec ctest --preset default --parallel "$(($(jobs_at_once) + 1))" "$@"
}

run_docs() { run_script docs/build_docs.sh "$ROOT/build/docs" "$@"; }

run_packages() { run_script packaging/packages.sh "$ROOT/build/packages" "$@"; }

run_abi() { run_script packaging/abi/check_abi.sh "$ROOT/build/abi" "$@"; }

run_bench() {
  build_preset bench bench/all
  run_script bench/run_bench.sh "$ROOT/build/bench" "$@"
}

run_faults() {
  build_preset default standalone/all services/all demo/all tools/all faults
  make_work_dir
  run_script tests/faults/run_faults.sh "$ROOT/build/default" "$WORK_DIR" "$@"
}

run_asan() { run_script checks/sanitize.sh "$ROOT" asan "$@"; }

run_tsan() { run_script checks/sanitize.sh "$ROOT" tsan "$@"; }

run_valgrind() {
  build_programs
  run_script checks/valgrind.sh "$ROOT/build/default" "$@"
}

run_tidy() { run_script checks/tidy.sh "$ROOT" "$@"; }

run_fuzz() { run_script checks/fuzz.sh "$ROOT" "$@"; }

main "$@"
