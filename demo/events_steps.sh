# The steps of run_demo.sh that are about events; to be sourced, with demo_lib.sh.
# shellcheck shell=bash

EVENTS="$DIR/events"
SERVICES="$EVENTS/cbb/nbi/nbicbb_3p/share"
TRACES="$EVENTS/log/corbasys.log"

events_oss() {
  oss_as "$USER_NAME" "${EVENTS_OPTIONS[@]}" --password-file "$DIR/oss-password" "$@"
}

# listen NAME ARGUMENTS...: an OSS that shows events in NAME.out; its process id is in STARTED
listen() {
  local name="$1"
  shift
  start "$name" "$BIN/qv_demo_oss" "${EVENTS_OPTIONS[@]}" --user "$USER_NAME" \
    --password-file "$DIR/oss-password" events "$@"
  wait_for "$name" "$STARTED" "$DIR/$name.out" '^-- listening'
}

# start_events_agent NAMING_PORT AGENT_PORT NOTIFY_PORT
start_events_agent() {
  mkdir -p "$EVENTS/ems" "$SERVICES/bin"
  ln -s "$BIN/Naming_Service" "$BIN/Notify_Service" "$SERVICES/bin/"
  fill_in "$1" "$2" "$3" events.toml.in >"$EVENTS/events.toml"
  # The agent keeps the channel's reference where it runs.
  start events-agent env -C "$EVENTS" "$BIN/qv_demo_agent" --config events.toml \
    --inventory "$DATA/inventory.json" --events
  EVENTS_AGENT_PID=$STARTED
  wait_for events-agent "$EVENTS_AGENT_PID" "$DIR/events-agent.out" '^ready'
  # A notification service that takes its time gets its channel after that, and nobody can listen before.
  wait_for events-agent "$EVENTS_AGENT_PID" "$EVENTS/channel.ior" '^IOR:'
}

# Kills the notification service, waits until the agent's buffer is full, and starts it as it was.
break_service() {
  local pid directory command
  pid="$(<"$SERVICES/notify.pid")"
  directory="$(readlink "/proc/$pid/cwd")"
  mapfile -d '' -t command <"/proc/$pid/cmdline"
  kill -9 "$pid"
  echo "kill -9 $pid"
  wait_for events-agent "$EVENTS_AGENT_PID" "$TRACES" 'one event was discarded'
  start notify env -C "$directory" "${command[@]}"
  NOTIFY_PID=$STARTED
  wait_for notify "$NOTIFY_PID" "$DIR/notify.out" 'serving'
  fold -s -w 100 "$DIR/notify.out"
}

account_events() {
  "$HERE/account_events.py" --ledger "$EVENTS/log/events.csv" --traces "$TRACES" \
    --service "$DIR/notify.err" --oss urgent "$DIR/urgent.out" "severity=PS_CRITICAL|PS_MAJOR" \
    --oss no-heartbeats "$DIR/no-heartbeats.out" "type=NT_ALARM|NT_ATTRIBUTE_VALUE_CHANGE"
}

step "12. An agent that sends events starts its naming and notification service itself"
mapfile -t EVENTS_OPTIONS < <(oss_options "${PORTS[3]}")
start_events_agent "${PORTS[@]:3:3}"
fold -s -w 100 "$DIR/events-agent.out"

step "13. Two OSSs listen, one to urgent alarms, one to everything but heartbeats"
# shellcheck disable=SC2016  # the dollar sign is the filter's
listen urgent --filter '$perceivedSeverity == PS_CRITICAL or $perceivedSeverity == PS_MAJOR'
URGENT_PID=$STARTED
listen no-heartbeats --types NT_ALARM,NT_ATTRIBUTE_VALUE_CHANGE
ALL_PID=$STARTED
events_oss raise 240 --per-second 30

step "14. In the middle of that the notification service is killed, and started again"
note "The agent keeps 40 events meanwhile and drops what goes beyond; the OSSs are told."
wait_for no-heartbeats "$ALL_PID" "$DIR/no-heartbeats.out" 'label-[34]'
break_service
wait_for events-agent "$EVENTS_AGENT_PID" "$DIR/events-agent.out" '^events  raised'
for _ in {1..50}; do
  account_events >/dev/null 2>&1 && break
  sleep 0.1
done
note "What the first OSS saw at the beginning, of the outage, and at its end:"
stop "$URGENT_PID"
stop "$ALL_PID"
head -n 5 "$DIR/urgent.out" | fit
echo ...
grep --no-group-separator -A 2 -e "-- the EMS" "$DIR/urgent.out" | fit
tail -n 1 "$DIR/urgent.out" | fit

step "15. What became of each event"
note "From the agent's ledger and traces, the service's messages and what the OSSs printed:"
account_events || die "the accounts of the events don't balance"
stop "$EVENTS_AGENT_PID"
stop "$NOTIFY_PID"
