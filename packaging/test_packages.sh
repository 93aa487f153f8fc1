#!/usr/bin/env bash
# Installs the packages of a folder into a throw-away system, tries them, and removes them again.
set -euo pipefail

HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
readonly HERE
# shellcheck source=scripts/build_lib.sh
source "$HERE/../scripts/build_lib.sh"

usage() {
  cat <<'TEXT'
usage: test_packages.sh WORKDIR

WORKDIR holds the packages, as packages.sh leaves them there. The system they are tried in is this machine's root with a
layer above it that takes all changes and is forgotten at the end; it has no network but the loopback interface. Needs
root.
TEXT
}

# What packages changed without being asked to: package management itself, its caches and logs.
readonly IGNORED='^(var/cache|var/log|var/lib/dpkg|var/lib/apt|usr/sbin/policy-rc\.d$)'

# require_clean UPPER: fails when the layer has files or folders that the machine lacks, or hides some that it has.
require_clean() {
  local path hidden left=()
  while IFS= read -r path; do
    hidden="$(stat -c %F:%t:%T "$1/$path")"
    if [[ "$hidden" == "character special file:0:0" ]]; then
      left+=("taken along: /$path")
    elif [[ ! -e "/$path" && ! -L "/$path" ]]; then
      left+=("left behind: /$path")
    fi
  done < <(cd "$1" && find . -mindepth 1 -printf '%P\n' | grep -vE "$IGNORED")
  if [[ ${#left[@]} -gt 0 ]]; then
    printf '%s\n' "${left[@]}" >&2
    die "removing the packages did not restore the system, see above."
  fi
}

# Runs in namespaces of its own: whatever is mounted and started here ends with it.
enter() {
  local packages="$1" layer="$2" system folder
  mount --make-rprivate /
  mount -t tmpfs layer "$layer"
  mkdir "$layer"/{upper,work,system}
  system="$layer/system"
  mount -t overlay overlay -o "lowerdir=/,upperdir=$layer/upper,workdir=$layer/work" "$system" ||
    die "a layer above this machine's root cannot be made. The kernel needs overlayfs; in a container run it privileged."
  mount -t proc proc "$system/proc"
  mount --rbind /dev "$system/dev"
  for folder in tmp run; do
    mount -t tmpfs "$folder" "$system/$folder"
  done
  chmod 1777 "$system/tmp"
  mkdir "$system/tmp/packages" "$system/tmp/try"
  mount --bind "$packages" "$system/tmp/packages"
  mount --bind -o ro "$HERE" "$system/tmp/try"
  # No service of another package may start.
  printf '#!/bin/sh\nexit 101\n' >"$system/usr/sbin/policy-rc.d"
  chmod +x "$system/usr/sbin/policy-rc.d"
  chroot "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    bash /tmp/try/try_packages.sh /tmp/packages
  require_clean "$layer/upper"
  printf '==> the packages install, work, and leave nothing behind\n'
}

case "${1:-}" in
  --help | -h)
    usage
    exit
    ;;
  '')
    usage >&2
    exit 2
    ;;
  --entered)
    enter "$2" "$3"
    exit
    ;;
esac
[[ "$(id -u)" == 0 ]] || die "a throw-away system needs root. Run this as root."
packages="$(cd "$1" 2>/dev/null && pwd)" || die "there is no folder $1."
compgen -G "$packages/*.deb" >/dev/null || die "$packages holds no packages. Build them: packaging/packages.sh $packages"
layer="$(mktemp -d)"
trap 'rmdir "$layer"' EXIT
unshare --mount --pid --net --ipc --fork --kill-child "${BASH_SOURCE[0]}" --entered "$packages" "$layer"
