#!/usr/bin/env bash
# Builds the Debian packages from a clean export of HEAD, checks them, and tries them in a throw-away system.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
readonly ROOT
# shellcheck source=scripts/build_lib.sh
source "$ROOT/scripts/build_lib.sh"

usage() {
  cat <<'TEXT'
usage: packages.sh WORKDIR [--no-test]

Leaves the packages in WORKDIR. The last step, to install, run and remove them in a throw-away system, needs root; it is
left out with --no-test.
TEXT
}

export_head() {
  rm -rf "$work/source" "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo
  mkdir -p "$work/source"
  git -C "$ROOT" archive HEAD | tar -x -C "$work/source"
}

build_packages() {
  local missing
  missing="$(cd "$work/source" && dpkg-checkbuilddeps -Pnocheck 2>&1)" ||
    die "packages that the build needs are missing. ${missing#*: error: }"
  (
    cd "$work/source"
    # Compilers by way of ccache, where it is installed.
    [[ ! -d /usr/lib/ccache ]] || export PATH="/usr/lib/ccache:$PATH"
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
    export DEB_BUILD_OPTIONS="nocheck parallel=${QV_JOBS:-$(nproc)}"
    dpkg-buildpackage --build=binary --unsigned-changes --unsigned-buildinfo --build-profiles=nocheck
  ) >"$work/build.log" 2>&1 || {
    tail -n 40 "$work/build.log" >&2
    die "the packages could not be built; the messages above are the last of $work/build.log."
  }
}

check_packages() {
  lintian --allow-root --tag-display-limit 0 --fail-on error,warning "$work"/*.changes ||
    die "lintian found faults in the packages, see above. Correct debian/, or override there with a reason."
}

[[ "${1:-}" != --help && "${1:-}" != -h ]] || { usage; exit; }
[[ $# -ge 1 ]] || { usage >&2; exit 2; }
mkdir -p "$1" || die "the folder $1 cannot be made. Name another."
work="$(cd "$1" && pwd)"
need git git
need dpkg-buildpackage dpkg-dev
need dh debhelper
need lintian lintian
say "exporting $(git -C "$ROOT" describe --always --tags HEAD)"
export_head
say "building the packages (messages in $work/build.log)"
build_packages
say "checking them"
check_packages
for package in "$work"/*.deb; do
  say "built $package"
done
if [[ "${2:-}" == --no-test ]]; then
  exit
fi
if [[ "$(id -u)" != 0 ]]; then
  say "not installed anywhere: a throw-away system needs root. As root: packaging/test_packages.sh $work"
  exit
fi
"$ROOT/packaging/test_packages.sh" "$work"
