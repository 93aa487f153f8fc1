#!/usr/bin/env bash
# Checks every shell script of the tree. usage: check_scripts.sh ROOT
set -euo pipefail
root=${1:?usage: check_scripts.sh ROOT}
command -v shellcheck >/dev/null || {
  echo "shellcheck is missing. ./run.sh install-deps test installs it." >&2
  exit 1
}
cd "$root"
mapfile -d '' scripts < <(find . -path ./build -prune -o -path ./.git -prune -o -name '*.sh' -print0)
((${#scripts[@]} > 5)) || {
  echo "only ${#scripts[@]} scripts were found below $root" >&2
  exit 1
}
shellcheck --external-sources .ci/run "${scripts[@]}"
echo "${#scripts[@]} scripts are fine"
