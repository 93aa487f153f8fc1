# What run_demo.sh and run_agent.sh share; to be sourced.
# Needs: BIN (directory of the programs), DATA (this demo's data), DIR (where everything is written), WITH_SSL (empty
# for calls in clear).
# shellcheck shell=bash
# shellcheck source=demo/ssl_lib.sh
source "$HERE/ssl_lib.sh"

HOST=127.0.0.2
# shellcheck disable=SC2034  # for who sources this
USER_NAME=oss
PIDS=()

if [[ -t 1 && -z "${NO_COLOR:-}" ]]; then
  BOLD=$'\e[1m' DIM=$'\e[2m' RED=$'\e[31m' PLAIN=$'\e[0m'
else
  BOLD='' DIM='' RED='' PLAIN=''
fi

step() { printf '\n%s%s%s\n' "$BOLD" "$*" "$PLAIN"; }
note() { printf '%s%s%s\n' "$DIM" "$*" "$PLAIN"; }
die() {
  printf '%s%s: %s%s\n' "$RED" "$(basename "$0")" "$*" "$PLAIN" >&2
  exit 1
}

need_programs() {
  local program
  for program in Naming_Service Notify_Service qv_demo_agent qv_demo_oss qv_user ${WITH_SSL:+qv_ssl}; do
    [[ -x "$BIN/$program" ]] || die "$BIN/$program is missing; build it first (./run.sh does)"
  done
  [[ -z "$WITH_SSL" ]] || command -v openssl >/dev/null || die "openssl is missing; install the package of that name"
}

# port_is_free PORT
port_is_free() {
  python3 - "$HOST" "$1" <<'PY'
import socket, sys
s = socket.socket()
s.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
try:
    s.bind((sys.argv[1], int(sys.argv[2])))
except OSError:
    sys.exit(1)
PY
}

# free_ports COUNT: different ports that nobody uses now, one in a line
free_ports() {
  python3 - "$HOST" "$1" <<'PY'
import socket, sys
held = [socket.socket() for _ in range(int(sys.argv[2]))]
for s in held:
    s.bind((sys.argv[1], 0))
    print(s.getsockname()[1])
PY
}

# fill_in NAMING_PORT AGENT_PORT NOTIFY_PORT TEMPLATE: the configuration with these ports
fill_in() {
  sed -e "s/@NAMING_PORT@/$1/" -e "s/@AGENT_PORT@/$2/" -e "s/@NOTIFY_PORT@/$3/" "$DATA/$4" | add_ssl_settings "${@:1:3}"
}

# write_config NAMING_PORT AGENT_PORT [NOTIFY_PORT]; without the last one no events can be sent
write_config() { fill_in "$1" "$2" "${3:-12002}" agent.toml.in >"$DIR/agent.toml"; }

# own_address: an IPv4 address of this host that isn't the loopback's; nothing when there is none
own_address() {
  hostname -I 2>/dev/null | tr ' ' '\n' | grep -E '^[0-9.]+$' | grep -v '^127\.' | head -n 1 || true
}

# write_guarded_config NAMING_PORT AGENT_PORT ADDRESS: an agent that is reached at ADDRESS, but whose list of OSSs names
# another one. It stops at once for want of a thread pool.
write_guarded_config() {
  fill_in "$1" "$2" 12002 agent.toml.in | sed -e "s/^CORBAAgent_Host = .*/CORBAAgent_Host = \"$3\"/" \
    -e 's/^EmsName = .*/EmsName = "Zorvex\/Guarded"\nORBThreadPoolEnable = false/' \
    -e 's/^log_dir = .*/log_dir = "log-guarded"\noss_addresses = ["192.0.2.250"]/' \
    >"$DIR/guarded.toml"
}

# make_user NAME: lets NAME log in with a password by chance, which lies in the file NAME-password; that file and the one
# with its hash are for the owner alone
make_user() {
  (
    umask 077
    python3 -c 'import secrets; print(secrets.token_urlsafe(9))' >"$DIR/$1-password"
    "$BIN/qv_user" add "$DIR/users.toml" "$1" <"$DIR/$1-password"
  )
}

# The names that a span of the agent carries.
export APP_NAME=qv_demo PROCESS_NAME=agent NODE_ID=1 PROCESS_SLOT=0

# start NAME COMMAND...: runs it in a session of its own, so that Ctrl-C reaches this script alone, with its output in
# NAME.out and NAME.err; STARTED is its process id
start() {
  local name="$1"
  shift
  setsid "$@" >"$DIR/$name.out" 2>"$DIR/$name.err" </dev/null &
  STARTED=$!
  PIDS+=("$STARTED")
}

# wait_for NAME PID FILE PATTERN: until a line of FILE matches, or the process ends, or time is up: 30 seconds, or
# DEMO_PATIENCE where the programs are slower than by themselves
wait_for() {
  local name="$1" pid="$2" file="$3" pattern="$4" tries=0 patience="${DEMO_PATIENCE:-30}"
  until grep -q -- "$pattern" "$file" 2>/dev/null; do
    if ! kill -0 "$pid" 2>/dev/null; then
      cat "$DIR/$name.err" >&2
      die "$name has ended; its message stands above"
    fi
    ((++tries <= patience * 10)) || die "$name is not ready after $patience seconds; see $DIR/$name.err"
    sleep 0.1
  done
}

# stop PID: asks a process to end and waits for it
stop() {
  kill -TERM "$1" 2>/dev/null || return 0
  wait "$1" 2>/dev/null || true
}

# Ends what was started, last one first.
stop_all() {
  local i
  for ((i = ${#PIDS[@]} - 1; i >= 0; --i)); do
    stop "${PIDS[i]}"
  done
  PIDS=()
}

start_naming() {
  rm -f "$DIR/ns.ior"
  local ssl=()
  mapfile -t ssl < <(ssl_arguments)
  start naming "$BIN/Naming_Service" -ORBEndpoint "$(endpoint "$1")" "${ssl[@]}" -o "$DIR/ns.ior" -u "$DIR/naming-data"
  NAMING_PID=$STARTED
  wait_for naming "$NAMING_PID" "$DIR/ns.ior" '^IOR:'
}

# start_notify NAMING_PORT NOTIFY_PORT
start_notify() {
  local ssl=()
  mapfile -t ssl < <(ssl_arguments)
  start notify "$BIN/Notify_Service" -ORBInitRef "NameService=corbaloc:$(scheme):$(address "$1")/NameService" \
    -ORBEndpoint "$(endpoint "$2")" "${ssl[@]}" -u "$DIR/notify-data"
  wait_for notify "$STARTED" "$DIR/notify.out" 'serving'
}
