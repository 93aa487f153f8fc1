#!/usr/bin/env bash
# Shows an OSS in a process of its own that finds the demo EMS in a naming service, logs in, reads an inventory, changes
# what it may and logs out; then who is turned away, and what the agent has written down of it all.
# Usage: run_demo.sh BUILD_DIR WORK_DIR [--ssl]
# With --ssl all of it goes by SSL, and clients are shown that the agent turns away for their certificates.
set -euo pipefail

[[ $# == 2 || ($# == 3 && "$3" == --ssl) ]] || {
  echo "usage: run_demo.sh BUILD_DIR WORK_DIR [--ssl]" >&2
  exit 2
}
WITH_SSL="${3:-}"
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
BIN="$1/bin"
DATA="$HERE/data"
DIR="$2/demo"
# shellcheck source=demo/demo_lib.sh
source "$HERE/demo_lib.sh"
export COLUMNS=100

# Of the 300 elements the first ones will do.
shorten() { awk '/^NE-/ { if (++n > 5) next } n > 5 && !told { print "  ..."; told = 1 } { print }'; }

# Nothing beyond the 100th column.
fit() { awk 'length($0) > 100 { $0 = substr($0, 1, 97) "..." } { print }'; }

# record OPERATION: the first record of its request in the operation log, without the time
record() {
  awk -v operation="Operation Name = $1" '
    /MessageType:/ { if (wanted) exit; sub(/^.*---MessageType/, "---MessageType"); text = $0; next }
    /^ / { sub(/^    /, ""); text = text "\n" $0 }
    index($0, operation) && text ~ /REQUEST/ { wanted = 1 }
    END { print text }' "$DIR/log/corbaoper.log" | grep -v '^$' | fit
}

oss_as() {
  local user="$1"
  shift
  "$BIN/qv_demo_oss" "${OSS_OPTIONS[@]}" --user "$user" "$@"
}
oss() { oss_as "$USER_NAME" --ems Zorvex/KLV --password-file "$DIR/oss-password" "$@"; }

# refused COMMAND...: shows how a command fails, with its exit code in CODE; when it doesn't, the EMS is at fault
refused() {
  CODE=0
  "$@" 2>&1 || CODE=$?
  [[ $CODE != 0 ]] || die "the EMS let in what it had to refuse"
}

start_agent() {
  start "$1" "$BIN/qv_demo_agent" --config "$DIR/$1.toml" --inventory "$DATA/inventory.json"
  wait_for "$1" "$STARTED" "$DIR/$1.out" '^ready'
}

trap stop_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

need_programs
rm -rf "$DIR"
mkdir -p "$DIR"
mapfile -t PORTS < <(free_ports 12)
[[ -z "$WITH_SSL" ]] || pair_ports "${PORTS[@]}"
NAMING_PORT="${PORTS[0]}"
mapfile -t OSS_OPTIONS < <(oss_options "$NAMING_PORT")
if [[ -n "$WITH_SSL" ]]; then
  step "0. Certificates are made for this run, and checked ahead of the start"
  note "An authority, a certificate for the servers, one for OSSs, and some that are to be turned away."
  make_certificates | sed "s|$DIR/||g"
  use_certificates
  note "What qv_ssl check finds:"
  "$BIN/qv_ssl" check --profile "$SERVER_PROFILE" | sed "s|$DIR/||g" | fit
fi
write_config "${PORTS[@]:0:2}"
[[ -z "$WITH_SSL" ]] || publish_reference "$DIR/agent.toml"
make_user "$USER_NAME"
make_user guest

step "1. A naming service starts"
note "It keeps the names under which programs find each other. An OSS has to know its address alone."
start_naming "$NAMING_PORT"
echo "naming service  $(address "$NAMING_PORT")"

step "2. The agent starts: a small EMS on top of the library"
note "It registers its session factory under the name that the MTNM interface lays down."
start_agent agent
AGENT_PID=$STARTED
fold -s -w 100 "$DIR/agent.out"

step "3. An OSS looks at what is bound in the naming service"
oss browse

step "4. The OSS logs in, reads the inventory, and logs out"
note "User $USER_NAME; the password was made for this run. The agent knows its Argon2id hash alone."
oss session | shorten

step "5. It counts, keeps notes about an element, and changes its password"
note "The notes are unions in a list of structures, or an Any: a text, a number and a flag."
oss count
oss annotate NE-00003 'note=fan is loud' watched=true >/dev/null
oss annotate NE-00003 limit=70
(umask 077 && python3 -c 'import secrets; print(secrets.token_urlsafe(9))' >"$DIR/new-password")
oss change-password --new-password-file "$DIR/new-password"
mv "$DIR/new-password" "$DIR/oss-password"

step "6. Somebody guesses the password of the user guest"
note "After three wrong ones the user is locked for a minute, and not even the right one helps."
for _ in 1 2 3; do
  QV_OSS_PASSWORD=wrong refused oss_as guest login
done
refused oss_as guest --password-file "$DIR/guest-password" login
echo "exit code $CODE says so to a script"

step "7. An OSS calls from an address that the access list doesn't hold"
ADDRESS="$(own_address)"
if [[ -n "$ADDRESS" ]]; then
  note "A second agent is reached at $ADDRESS and lets 192.0.2.250 alone call it."
  write_guarded_config "$NAMING_PORT" "${PORTS[2]}" "$ADDRESS"
  start_agent guarded
  GUARDED_PID=$STARTED
  refused oss_as "$USER_NAME" --ems Zorvex/Guarded --password-file "$DIR/oss-password" login
  echo "exit code $CODE says so to a script"
  stop "$GUARDED_PID"
  note "Its console says:"
  grep '^refused' "$DIR/guarded.out"
else
  echo "This host has no address but the loopback's, which is always let in: nothing to show."
fi

step "8. What the agent noticed"
note "On its console:"
sed -n '/^ready/,$p' "$DIR/agent.out" | tail -n +2
note "Calls of each operation, from log/CORBAAgentStatisticInfo.dat:"
column -c 100 "$DIR/log/CORBAAgentStatisticInfo.dat" 2>/dev/null || cat "$DIR/log/CORBAAgentStatisticInfo.dat"

step "9. The operation log"
note "Each request and its end leave a record in log/corbaoper.log, with passwords masked:"
record getEmsSession
record modifyPassword
record setAttributes

if [[ -x "$BIN/qv_audit" ]]; then
  step "10. The audit"
  note "Operations with a risk, who asked for them and what came of it, from log/audit.db:"
  "$BIN/qv_audit" "$DIR/log/audit.db" | fit
fi

if [[ -x "$BIN/qv_spans" && -s "$DIR/log/callchain.jsonl" ]]; then
  step "11. The requests of step 4 as a time line"
  note "Each request leaves a span in log/callchain.jsonl. A login is slow on purpose, against guessing."
  awk '{ print } /endSession/ { exit }' "$DIR/log/callchain.jsonl" >"$DIR/session.jsonl"
  "$BIN/qv_spans" --width 100 --last 0 "$DIR/session.jsonl"
fi

# shellcheck source=demo/events_steps.sh
source "$HERE/events_steps.sh"

LAST_STEP=16
if [[ -n "$WITH_SSL" ]]; then
  # shellcheck source=demo/ssl_steps.sh
  source "$HERE/ssl_steps.sh"
fi

step "$LAST_STEP. Everything stops"
note "The agent takes its name out of the naming service; then its threads get some seconds to end."
stop "$AGENT_PID"
tail -n 1 "$DIR/agent.out"
oss browse
stop "$NAMING_PID"
PIDS=()
echo "All files of this run are in $DIR"
