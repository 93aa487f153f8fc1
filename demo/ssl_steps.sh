# The steps of run_demo.sh --ssl that show who is turned away for want of SSL; to be sourced, with demo_lib.sh.
# shellcheck shell=bash

AGENT_ADDRESS="$(address "${PORTS[1]}")"

# oss_direct ARGUMENTS...: an OSS that calls the agent without asking the naming service
oss_direct() {
  "$BIN/qv_demo_oss" --ior "$DIR/factory.ior" --user "$USER_NAME" --password-file "$DIR/oss-password" "$@" login
}

# agent_says NUMBER TEXT: the first line with TEXT that the agent has written behind so many lines, waiting for it
agent_says() {
  local line tries
  for ((tries = 0; tries < 50; ++tries)); do
    line="$(tail -n "+$(($1 + 1))" "$DIR/agent.err" | grep -m 1 -e "$2")" && break
    sleep 0.1
  done
  [[ -n "$line" ]] || die "the agent's log doesn't tell of it"
  note "The agent's log says:"
  fold -s -w 100 <<<"$line"
}

# turned_away TEXT COMMAND...: shows how a command fails, and what the agent's log says of it, which holds TEXT
turned_away() {
  local text="$1" before
  before="$(wc -l <"$DIR/agent.err")"
  shift
  refused "$@" >"$DIR/refused.out"
  fold -s -w 100 "$DIR/refused.out"
  echo "exit code $CODE"
  agent_says "$before" "$text"
}

# handshake OPTION: tries a handshake with one version of TLS, the certificate being an OSS's, and tells what came of it
handshake() {
  local pass outcome
  pass="$(sed -n 's/^# -SSLPrivateKeyPasswd //p' "$CLIENT_PROFILE")"
  outcome="$(PASS="$pass" timeout 10 openssl s_client -connect "$AGENT_ADDRESS" "$1" -cipher ALL:@SECLEVEL=0 \
    -cert "$CERTIFICATES/client.pem" -key "$CERTIFICATES/client-key.pem" -pass env:PASS \
    -CAfile "$CERTIFICATES/authority.pem" </dev/null 2>&1)" || true
  if grep -q '^New, TLS' <<<"$outcome"; then
    echo "openssl s_client $1: connected, $(sed -n 's/^ *Protocol *: //p' <<<"$outcome")"
  else
    echo "openssl s_client $1: $(sed -n 's/.*:SSL routines:[^:]*:\([^:]*\):.*/\1/p' <<<"$outcome" | head -n 1)"
    return 1
  fi
}

step "16. An OSS without a certificate"
note "It trusts the right authority, but has nothing to show when the agent asks who it is."
turned_away 'shows no certificate' oss_direct --ssl-profile "$CERTIFICATES/nameless.conf"

step "17. An OSS with a certificate of another authority"
turned_away 'authority that is not known' oss_direct --ssl-profile "$CERTIFICATES/stranger.conf"
note "The same with one of the right authority whose time is over:"
turned_away 'has expired' oss_direct --ssl-profile "$CERTIFICATES/expired.conf"

step "18. A client that speaks no more than TLS 1.0 or 1.1"
note "Its certificate is that of an OSS. The third try shows that nothing but the version was wrong."
turned_away 'does not offer TLS 1.2' handshake -tls1
turned_away 'does not offer TLS 1.2' handshake -tls1_1
handshake -tls1_2 || die "the agent refused TLS 1.2"

step "19. An OSS that calls in clear"
note "The agent's reference names a plain port too. Requests there get NO_PERMISSION."
turned_away 'request in clear' oss_direct
note "The naming service does likewise:"
refused "$BIN/qv_demo_oss" --naming "$HOST:$NAMING_PORT" browse
note "And an OSS with its own certificate is served as ever:"
oss_direct --ssl-profile "$CLIENT_PROFILE"
# shellcheck disable=SC2034  # for who sources this
LAST_STEP=20
