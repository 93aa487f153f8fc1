#!/usr/bin/env bash
# Runs agent, services and OSSs on three hosts of network namespaces through faults drawn by chance.
# Usage: run_faults.sh BUILD_DIR WORK_DIR [--seed N] [--minutes N] [--quick] [--only WORD,...] [--keep-going]
set -euo pipefail

HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=scripts/build_lib.sh
source "$HERE/../../scripts/build_lib.sh"

for argument in "$@"; do
  if [[ "$argument" == --help || "$argument" == -h ]]; then
    cd "$HERE"
    exec python3 -B -m campaign --help
  fi
done
[[ $# -ge 2 ]] || {
  echo "usage: run_faults.sh BUILD_DIR WORK_DIR [--seed N] [--minutes N] [--quick] [--only WORD,...] [--keep-going]" >&2
  exit 2
}
BUILD="$(cd "$1" 2>/dev/null && pwd)" || die "$1 is not there; build first (./run.sh does)"
mkdir -p "$2"
WORK="$(cd "$2" && pwd)"
shift 2

[[ $EUID == 0 ]] || die "network namespaces and disks of its own take root; run it with sudo"
for program in Naming_Service Notify_Service qv_demo_agent qv_user qv_fault_switch qv_fault_oss qv_fault_consumer; do
  [[ -x "$BUILD/bin/$program" ]] || die "$BUILD/bin/$program is missing; build the target faults"
done
need ip iproute2
need unshare util-linux
need nsenter util-linux
[[ -c /dev/net/tun ]] || die "/dev/net/tun is missing; the kernel has to offer TUN devices"

# What is mounted from here on is seen by this process and those below alone, and goes with them. Shared memory of the
# programs lies on a file system of their own, for kill -9 leaves it behind.
cd "$HERE"
# shellcheck disable=SC2016  # the inner shell's arguments
exec unshare --mount --propagation private -- \
  bash -c 'mount -t tmpfs -o size=64m qv-faults /dev/shm && exec python3 -B -m campaign "$@"' \
  campaign "$BUILD" "$WORK" "$@"
