#!/usr/bin/env bash
# Shows the whole demo with every program that stays running under valgrind's memcheck: naming service, notification
# service and agents, with clients that log in, call, are turned away and receive events, and orderly ends.
set -euo pipefail
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=checks/checks_lib.sh
source "$HERE/checks_lib.sh"

usage() {
  cat <<'TEXT'
usage: valgrind.sh BUILD_DIR [--ssl]

BUILD_DIR is a build of the programs without sanitizers, such as build/default; with --ssl the demo goes by SSL. What
memcheck reports is in BUILD_DIR/valgrind, one file per process. Fails when the demo does, or when there is an error:
memory that is read before it is written or outside of what is owned, or is lost for good.
TEXT
}

case "${1:-}" in
  -h | --help)
    usage
    exit 0
    ;;
  '')
    usage >&2
    exit 2
    ;;
esac
[[ -x "$1/bin/qv_demo_agent" ]] || die "$1/bin/qv_demo_agent is missing. Build the programs first (./run.sh demo does)."
BUILD="$(cd "$1" && pwd)"
shift
WORK="$BUILD/valgrind"
need valgrind

# wrap NAME: a program of the demo that runs under memcheck, in a folder of its own
wrap() {
  cat >"$WORK/bin/$1" <<TEXT
#!/bin/sh
exec valgrind --quiet --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite --num-callers=30 \\
  --child-silent-after-fork=yes --suppressions="$HERE/valgrind.supp" --log-file="$WORK/$1.%p.log" \\
  "$BUILD/bin/$1" "\$@"
TEXT
  chmod +x "$WORK/bin/$1"
}

rm -rf "$WORK"
mkdir -p "$WORK/bin"
for program in "$BUILD"/bin/qv_*; do
  ln -s "$program" "$WORK/bin/"
done
# A client waits for an answer for a little while only.
rm -f "$WORK/bin/qv_demo_oss"
printf '#!/bin/sh\nexec "%s" --timeout 300 "$@"\n' "$BUILD/bin/qv_demo_oss" >"$WORK/bin/qv_demo_oss"
chmod +x "$WORK/bin/qv_demo_oss"
for program in Naming_Service Notify_Service qv_demo_agent; do
  rm -f "$WORK/bin/$program"
  wrap "$program"
done

# The programs are some twenty times slower than by themselves.
say "the demo under memcheck"
DEMO_PATIENCE=300 "$HERE/../demo/run_demo.sh" "$WORK" "$WORK" "$@" >"$WORK/demo.out" 2>&1 || {
  tail -n 20 "$WORK/demo.out" >&2
  die "the demo failed under memcheck; its message stands above, all of it is in $WORK/demo.out."
}

# A report begins at the margin, behind the process id; what explains it is set in.
readonly REPORT='^==[0-9]+== ([A-Z]|[0-9,]+ .*lost)'
reports="$(cat "$WORK"/*.log | grep -E "$REPORT" | grep -cvE '== (Thread [0-9]+|Warning)' || true)"
for log in "$WORK"/*.log; do
  [[ ! -s "$log" ]] || {
    printf -- '---- %s\n' "$log"
    head -n 40 "$log" | cut -c 1-160
  }
done
say "$reports reports of memcheck from $(find "$WORK" -maxdepth 1 -name '*.log' | wc -l) processes, in $WORK"
[[ "$reports" == 0 ]]
