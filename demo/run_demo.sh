#!/usr/bin/env bash
# Shows an OSS in a process of its own that finds the demo EMS in a naming service, logs in, reads an inventory and logs
# out. Usage: run_demo.sh BUILD_DIR WORK_DIR
set -euo pipefail

[[ $# == 2 ]] || {
  echo "usage: run_demo.sh BUILD_DIR WORK_DIR" >&2
  exit 2
}
HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
BIN="$1/bin"
DATA="$HERE/data"
DIR="$2/demo"
# shellcheck source=demo/demo_lib.sh
source "$HERE/demo_lib.sh"

# Of the 300 elements the first ones will do.
shorten() { awk '/^NE-/ { if (++n > 5) next } n > 5 && !told { print "  ..."; told = 1 } { print }'; }

oss() { "$BIN/qv_demo_oss" --naming "$HOST:$NAMING_PORT" --user "$USER_NAME" --password-file "$DIR/oss-password" "$@"; }

trap stop_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

need_programs
rm -rf "$DIR"
mkdir -p "$DIR"
mapfile -t PORTS < <(free_ports 2)
NAMING_PORT="${PORTS[0]}"
write_config "${PORTS[@]}"
make_user "$USER_NAME"

step "1. A naming service starts"
note "It keeps the names under which programs find each other. Its own address is all that an OSS has to know."
start_naming "$NAMING_PORT"
echo "naming service  $HOST:$NAMING_PORT"

step "2. The agent starts: a small EMS on top of the library"
note "It registers its session factory under the name that the MTNM interface lays down."
start agent "$BIN/qv_demo_agent" --config "$DIR/agent.toml" --inventory "$DATA/inventory.json"
AGENT_PID=$STARTED
wait_for agent "$AGENT_PID" "$DIR/agent.out" '^ready'
cat "$DIR/agent.out"

step "3. An OSS looks at what is bound in the naming service"
oss browse

step "4. The OSS logs in, reads the inventory, and logs out"
note "User $USER_NAME; the password was made for this run and lies in $DIR/oss-password. The agent knows its Argon2id hash alone."
oss session | shorten

step "5. The same with a wrong password"
QV_OSS_PASSWORD=wrong "$BIN/qv_demo_oss" --naming "$HOST:$NAMING_PORT" --user "$USER_NAME" login 2>&1 &&
  die "the EMS let a wrong password in"
echo "exit code $? says so to a script"

step "6. What the agent noticed"
sed -n '/^ready/,$p' "$DIR/agent.out" | tail -n +2
note "Calls of each operation, counted by the request interceptor (CORBAAgentStatisticInfo.dat):"
cat "$DIR/log/CORBAAgentStatisticInfo.dat"
for log in corbaoper corbadebug; do
  if [[ -s "$DIR/log/$log.log" ]]; then
    note "The end of $log.log:"
    tail -n 4 "$DIR/log/$log.log" | cut -c -150
  fi
done

step "7. Everything stops"
note "The agent takes its name out of the naming service first. Its pool of threads gets some seconds to end."
stop "$AGENT_PID"
tail -n 1 "$DIR/agent.out"
oss browse
stop "$NAMING_PID"
PIDS=()
echo "All files of this run are in $DIR"
