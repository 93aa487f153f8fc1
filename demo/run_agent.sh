#!/usr/bin/env bash
# Leaves naming service, notification service and demo agent running until Ctrl-C.
# Usage: run_agent.sh BUILD_DIR WORK_DIR [--ssl]
# The ports are those of the settings' defaults, 12001 to 12003, or what NAMING_PORT, NOTIFY_PORT and AGENT_PORT say. With
# --ssl there are 22001 to 22003 as well, or NAMING_SSL_PORT, NOTIFY_SSL_PORT and AGENT_SSL_PORT, and all calls go there.
set -euo pipefail

[[ $# == 2 || ($# == 3 && "$3" == --ssl) ]] || {
  echo "usage: run_agent.sh BUILD_DIR WORK_DIR [--ssl]" >&2
  exit 2
}
WITH_SSL="${3:-}"
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
BIN="$1/bin"
DATA="$HERE/data"
DIR="$2/agent"
# shellcheck source=demo/demo_lib.sh
source "$HERE/demo_lib.sh"

NAMING_PORT="${NAMING_PORT:-12001}"
NOTIFY_PORT="${NOTIFY_PORT:-12002}"
AGENT_PORT="${AGENT_PORT:-12003}"
[[ -z "$WITH_SSL" ]] || pair_ports "$NAMING_PORT" "$NOTIFY_PORT" "$AGENT_PORT" \
  "${NAMING_SSL_PORT:-22001}" "${NOTIFY_SSL_PORT:-22002}" "${AGENT_SSL_PORT:-22003}"

trap stop_all EXIT
# The agent ends at once when it is told a second time.
trap 'kill -INT "${AGENT_PID:-$$}" 2>/dev/null || exit 130' INT TERM

need_programs
mkdir -p "$DIR"
for port in "$NAMING_PORT" "$NOTIFY_PORT" "$AGENT_PORT" "${SSL_PORT[@]}"; do
  port_is_free "$port" ||
    die "port $port is in use; end what uses it, or choose others: NAMING_PORT=... NOTIFY_PORT=... AGENT_PORT=..." \
      "${WITH_SSL:+NAMING_SSL_PORT=... NOTIFY_SSL_PORT=... AGENT_SSL_PORT=... }$0"
done
if [[ -n "$WITH_SSL" ]]; then
  [[ -d "$CERTIFICATES" ]] || make_certificates >/dev/null
  use_certificates
fi
write_config "$NAMING_PORT" "$AGENT_PORT" "$NOTIFY_PORT"
[[ -s "$DIR/users.toml" && -s "$DIR/oss-password" ]] || make_user "$USER_NAME"

start_naming "$NAMING_PORT"
start_notify "$NAMING_PORT" "$NOTIFY_PORT"
# The agent keeps the event channel's reference in the directory where it runs.
setsid env -C "$DIR" "$BIN/qv_demo_agent" --config agent.toml --inventory "$DATA/inventory.json" --events \
  2>"$DIR/agent.err" </dev/null &
AGENT_PID=$!
PIDS+=("$AGENT_PID")

mapfile -t OSS_OPTIONS < <(oss_options "$NAMING_PORT")
echo "naming service  $(address "$NAMING_PORT"), notification service $(address "$NOTIFY_PORT")"
echo "watch           tail -f $DIR/log/*.log"
echo "call it         $BIN/qv_demo_oss ${OSS_OPTIONS[*]} --user $USER_NAME \\"
echo "                  --password-file $DIR/oss-password session"
echo "                or events, and raise 20 in another terminal"
echo "stop            Ctrl-C"
code=0
while kill -0 "$AGENT_PID" 2>/dev/null; do
  wait "$AGENT_PID" && code=0 || code=$?
done
if [[ $code != 0 ]]; then
  cat "$DIR/agent.err" >&2
fi
exit "$code"
