# What the demo does about SSL; to be sourced by demo_lib.sh. Without WITH_SSL it yields what calls in clear need.
# shellcheck shell=bash

CERTIFICATES="$DIR/ssl"
SERVER_PROFILE="$CERTIFICATES/server.conf"
CLIENT_PROFILE="$CERTIFICATES/client.conf"
declare -A SSL_PORT=()

# pair_ports PLAIN... SSL...: the first SSL port goes with the first plain one, and so on
pair_ports() {
  local half=$(($# / 2)) i
  for ((i = 1; i <= half; ++i)); do
    SSL_PORT[${!i}]="${*:i+half:1}"
  done
}

# make_certificates: an authority, certificates and profiles, in a directory of this run
make_certificates() { "$BIN/qv_ssl" make --dir "$CERTIFICATES" --host "$HOST" --refused; }

# use_certificates: lets the agent look for revocation lists beside the certificates
use_certificates() { export _APP_SHARE_DIR="$CERTIFICATES"; }

scheme() { if [[ -n "$WITH_SSL" ]]; then echo ssliop; else echo iiop; fi; }

# address PORT: where clients reach what listens at this plain port, as HOST:PORT
address() { echo "$HOST:${SSL_PORT[$1]:-$1}"; }

# endpoint PORT: the end point of a server with this plain port
endpoint() { echo "iiop://$HOST:$1${SSL_PORT[$1]:+/ssl_port=${SSL_PORT[$1]}}"; }

# ssl_arguments: further arguments of a server, one in a line
ssl_arguments() { [[ -z "$WITH_SSL" ]] || printf '%s\n' -ORBSvcConf "$SERVER_PROFILE"; }

# oss_options NAMING_PORT: how an OSS reaches the naming service, one argument in a line
oss_options() {
  printf '%s\n' --naming "$(address "$1")"
  [[ -z "$WITH_SSL" ]] || printf '%s\n' --ssl-profile "$CLIENT_PROFILE"
}

# add_ssl_settings NAMING_PORT AGENT_PORT NOTIFY_PORT: passes on an agent's configuration, with SSL switched on
add_ssl_settings() {
  if [[ -z "$WITH_SSL" ]]; then
    cat
    return
  fi
  sed "/^\[agent\]/a SSLMode = 1\nSSL_Profile = \"$SERVER_PROFILE\"\nCORBAAgent_SSLPort = ${SSL_PORT[$2]}\n\
NamingService_SSLPort = ${SSL_PORT[$1]}\nNotifyService_SSLPort = ${SSL_PORT[$3]:-22002}"
}

# publish_reference FILE: lets the agent of this configuration file write the reference of its factory to factory.ior
publish_reference() { sed -i "/^SSLMode/a CORBAAgent_Option = \"-out $DIR/factory.ior\"" "$1"; }
