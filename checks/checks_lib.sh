# What the scripts of this folder share; to be sourced.
# shellcheck shell=bash
# shellcheck source=scripts/build_lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/build_lib.sh"

# source_root PATH: the absolute path of the tree to check
source_root() {
  [[ -f "$1/CMakePresets.json" ]] || die "$1 is not the top of the source tree. Name the folder with CMakePresets.json."
  (cd "$1" && pwd)
}
