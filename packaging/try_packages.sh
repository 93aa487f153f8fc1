#!/usr/bin/env bash
# Tries the packages inside the throw-away system that test_packages.sh makes. Not to be run elsewhere: it installs and
# purges them.
set -euo pipefail

readonly PACKAGES_DIR="${1:?usage: try_packages.sh FOLDER}"
readonly BINARIES=(libqv-corba-pub1 libqv-corba-pub-dev libqv-corba-pub-doc qv-corba-services qv-corba-tools)
readonly TOOLS=(qv_audit qv_config qv_spans qv_ssl qv_user)
readonly SERVICES=(Naming_Service Notify_Service)
readonly NAMING=corbaloc:iiop:127.0.0.1:12001/NameService
# Below /tmp, which is not part of the layer that is looked at afterwards.
readonly WORK=/tmp/tried

say() { printf '==> %s\n' "$*"; }

die() {
  printf 'try_packages.sh: %s\n' "$*" >&2
  exit 1
}

# wait_for WHAT COMMAND...: up to 30 seconds.
wait_for() {
  local what="$1" left=300
  shift
  until "$@" >/dev/null 2>&1; do
    ((left-- > 0)) || die "$what did not come about within 30 seconds."
    sleep 0.1
  done
}

install_packages() {
  local package files=()
  for package in "${BINARIES[@]}"; do
    files+=("$PACKAGES_DIR/${package}"_*.deb)
  done
  # Small systems are set up to leave manual pages and documents out.
  apt-get install --yes --no-install-recommends -o 'DPkg::Options::=--path-include=/usr/share/man/*' \
    -o 'DPkg::Options::=--path-include=/usr/share/doc/*' "${files[@]}" >"$WORK/install.log" 2>&1 || {
    cat "$WORK/install.log" >&2
    die "the packages could not be installed, see above. What they depend on has to be installed on this machine."
  }
}

try_tools() {
  local program
  for program in "${TOOLS[@]}"; do
    "$program" --help >/dev/null || die "$program does not run."
    man --where "$program" | grep -q '/man1/' || die "$program has no manual page."
  done
  for program in "${SERVICES[@]}"; do
    "$program" -h >/dev/null || die "$program does not run."
    man --where "$program" | grep -q '/man8/' || die "$program has no manual page."
  done
  qv_config --sample >"$WORK/agent.toml"
  qv_config --check "$WORK/agent.toml"
}

# setting UNIT NAME: the last value of a setting of a unit.
setting() {
  sed -n "s/^$2=//p" "/lib/systemd/system/$1.service" | tail -n 1
}

# start_unit UNIT: runs what systemd would, as the unit's user and with its folders; sets `started`.
start_unit() {
  local unit="$1" user variables command
  user="$(setting "$unit" User)"
  id "$user" >/dev/null || die "the user $user was not made."
  install -d -o "$user" -g "$user" "/var/lib/$unit" "/run/$unit"
  mapfile -t variables < <(sed -n 's/^Environment=//p' "/lib/systemd/system/$unit.service")
  command="$(setting "$unit" ExecStart)"
  env -i "${variables[@]}" STATE_DIRECTORY="/var/lib/$unit" RUNTIME_DIRECTORY="/run/$unit" PATH="$PATH" \
    setpriv --reuid="$user" --regid="$user" --clear-groups --no-new-privs --inh-caps=-all --bounding-set=-all \
    sh -c "exec $command" >"$WORK/$unit.log" 2>&1 &
  started=$!
}

try_services() {
  local naming notify
  start_unit qv-naming
  naming="$started"
  wait_for "an answer of qv-naming ($(cat "$WORK/qv-naming.log"))" nameclt -ORBInitRef "NameService=$NAMING" list
  [[ -s /run/qv-naming/naming.ior ]] || die "qv-naming has written no reference."
  [[ "$(stat -c %U "/proc/$naming")" == qv-naming ]] || die "qv-naming runs as another user."
  setpriv --reuid=qv-notify --regid=qv-notify --clear-groups \
    Notify_Service -ORBEndpoint iiop://127.0.0.1:12002 -u "$WORK/notify" --check
  start_unit qv-notify
  notify="$started"
  wait_for "the registration of qv-notify" \
    sh -c "nameclt -ORBInitRef NameService=$NAMING list | grep -q NotifyEventChannelFactory"
  [[ -s /var/lib/qv-notify/notify.db ]] || die "qv-notify has no store."
  try_bundle
  kill "$naming" "$notify"
  wait "$naming" || die "qv-naming did not end in order: $(cat "$WORK/qv-naming.log")"
  wait "$notify" || die "qv-notify did not end in order: $(cat "$WORK/qv-notify.log")"
}

# A project with IDL of its own.
try_idl() {
  local build="$WORK/consumer" server
  build_project consumer
  "$build/consumer" serve "$WORK/host.ior" >"$WORK/consumer.log" 2>&1 &
  server=$!
  wait_for "the reference of the project with IDL" test -s "$WORK/host.ior"
  "$build/consumer" call "$(cat "$WORK/host.ior")" | grep -q '^hello world$' || die "its call was not answered."
  wait "$server" || die "the project with IDL failed: $(cat "$WORK/consumer.log")"
}

try_units() {
  local unit
  systemd-analyze verify /lib/systemd/system/qv-{naming,notify}.service || die "systemd finds fault with the units."
  for unit in qv-naming qv-notify; do
    systemd-analyze security --offline=true --threshold=20 "$unit.service" >"$WORK/$unit.security" ||
      die "$unit is more exposed than it should be: $(tail -n 1 "$WORK/$unit.security")"
    say "$(tail -n 1 "$WORK/$unit.security")"
  done
}

# build_project NAME: one of the sources' own examples, on nothing but what is installed.
build_project() {
  local example="$PACKAGES_DIR/source/tests/integration/install_consume/$1" build="$WORK/$1"
  if ! { cmake -S "$example" -B "$build" -G Ninja && cmake --build "$build"; } >"$WORK/build.log" 2>&1; then
    cat "$WORK/build.log" >&2
    die "the project $1 cannot be built on the packages."
  fi
}

# An agent bundle and a client of it.
try_bundle() {
  local build="$WORK/bundle" bundle
  build_project bundle
  ldd "$build/bundle" | grep -qE '=> (/usr)?/lib/.*libqv_corba_pub\.so\.1' ||
    die "the bundle does not run on the installed library."
  printf '[agent]\nCORBAAgent_Host = "127.0.0.1"\nCORBAAgent_Port = 12003\n[platform]\nenv_root = "."\n' >"$build/agent.toml"
  (cd "$build" && QV_AGENT_CONFIG=agent.toml exec ./bundle bundle.ior) >"$WORK/bundle.log" 2>&1 &
  bundle=$!
  wait_for "the bundle's reference" test -s "$build/bundle.ior"
  "$build/client" "$(cat "$build/bundle.ior")" hello
  wait "$bundle" || die "the bundle failed: $(cat "$WORK/bundle.log")"
  grep -q '^heard hello in 2 requests$' "$WORK/bundle.log" || die "the bundle did not get its call: $(cat "$WORK/bundle.log")"
}

[[ "$(stat -f -c %T /tmp)" == tmpfs && "$PACKAGES_DIR" == /tmp/packages ]] || die "this is no throw-away system."
mkdir "$WORK"
chmod 777 "$WORK"
python3 -c 'import fcntl, socket, struct
s = socket.socket()
fcntl.ioctl(s, 0x8914, struct.pack("16sH14x", b"lo", 0x1 | 0x40))'
say "installing"
install_packages
say "running the tools"
try_tools
say "checking the units"
try_units
say "running the services, and a bundle built on the library"
try_services
say "compiling IDL"
try_idl
say "removing"
dpkg --purge "${BINARIES[@]}" >"$WORK/purge.log" 2>&1 || { cat "$WORK/purge.log" >&2; die "the packages could not be purged."; }
