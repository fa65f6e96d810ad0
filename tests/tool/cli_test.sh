#!/usr/bin/env bash
# The program as a user types it: exit status, pipes, "-", signals.   cli_test.sh PROGRAM
set -uo pipefail
mmsbrix=$1
folder=$(mktemp -d)
relay=
cleanup() {
  [ -z "$relay" ] || kill "$relay" 2>/dev/null
  rm -rf "$folder"
}
trap cleanup EXIT
cd "$folder" || exit 1
failures=0

# expect STATUS TEXT COMMAND...: the command ends so, and prints TEXT somewhere
expect() {
  local status=$1 text=$2 output got
  shift 2
  output=$("$@" 2>&1 </dev/null)
  got=$?
  if [ "$got" -ne "$status" ] || [[ $output != *"$text"* ]]; then
    printf 'FAILED: %s\n  status %s (wanted %s), wanted "%s" in:\n%s\n' "$*" "$got" "$status" "$text" "$output"
    failures=$((failures + 1))
  fi
}

expect 0 "mmsbrix 0." "$mmsbrix" --version
expect 0 "Exit status" "$mmsbrix" --help
for verb in compose show send listen relay demo; do expect 0 "Options" "$mmsbrix" "$verb" --help; done
expect 2 "" "$mmsbrix"
expect 2 "mmsbrix: there is no frobnicate" "$mmsbrix" frobnicate
expect 2 "mmsbrix compose: --output is required" "$mmsbrix" compose --to +1 --text hi
expect 2 "--json excludes" "$mmsbrix" compose --json x --to +1 -o y
expect 2 "" "$mmsbrix" compose --to +1 --text hi --priority urgent -o y
expect 0 "" "$mmsbrix" compose --to +1 --to a@b.c --text hi --text 'ho ho' -o m.mms
expect 0 "parts: 2" "$mmsbrix" show m.mms
expect 1 "No such file" "$mmsbrix" show none.mms
expect 1 "cannot be written" "$mmsbrix" compose --to +1 --text hi -o none/m.mms
expect 1 "cannot be written" bash -c "'$mmsbrix' show m.mms > /dev/full"
expect 1 "cannot be written" bash -c "'$mmsbrix' compose --to +1 --text hi -o - > /dev/full"
expect 0 "" bash -c "'$mmsbrix' show --json m.mms | '$mmsbrix' compose --json - -o - | cmp - m.mms"

mkdir store
"$mmsbrix" relay --listen 127.0.0.1:0 --store store > relay.log &
relay=$!
for _ in $(seq 200); do grep -q listening relay.log && break; sleep 0.05; done
url=$(sed -n 's/^listening on //p' relay.log)
proxy=${url#http://}
proxy=${proxy%/}
expect 0 "accepted: 0x80 Ok" "$mmsbrix" send m.mms --url "$url"
expect 0 "accepted: 0x80 Ok" bash -c "'$mmsbrix' send - --url http://mmsc.example/ --proxy '$proxy' < m.mms"
kill -TERM "$relay"
wait "$relay"
status=$?
relay=
[ "$status" -eq 0 ] || { echo "FAILED: the relay ended with $status"; failures=$((failures + 1)); }
[ "$(find store -type f | wc -l)" -eq 2 ] || { echo "FAILED: not two messages stored"; failures=$((failures + 1)); }
for stored in store/*; do cmp "$stored" m.mms || failures=$((failures + 1)); done
expect 1 "error 12029: Failed to connect to the gateway  Check setup. (no connection can be made)" "$mmsbrix" send m.mms --url "$url"

# The same through a WAP gateway, and every layer that can say no.
expect 2 "--proxy excludes --wap" "$mmsbrix" send m.mms --url "$url" --wap localhost --proxy localhost
expect 2 "--wap: not HOST:PORT" "$mmsbrix" send m.mms --url "$url" --wap localhost:x
expect 1 "no answer (the gateway 127.0.0.1:9 does not answer)" \
  "$mmsbrix" send m.mms --url "$url" --wap 127.0.0.1:9 --timeout 1
expect 1 "(no way to the gateway nowhere.invalid:9201: " "$mmsbrix" send m.mms --url "$url" --wap nowhere.invalid
wap_relay() {  # OPTION...: starts it and sets $gateway
  : > relay.log  # the one before said that it listens, too
  "$mmsbrix" relay --wap 127.0.0.1:0 --store store "$@" > relay.log &
  relay=$!
  for _ in $(seq 200); do grep -q 'listening on wap' relay.log && break; sleep 0.05; done
  gateway=$(sed -n 's|^listening on wap://||p' relay.log)
}
wap_relay
expect 0 "accepted: 0x80 Ok" "$mmsbrix" send m.mms --url http://mmsc.example/ --wap "$gateway"
expect 0 "s_MethodResult_ind() transactionId = 1" "$mmsbrix" send m.mms --url http://mmsc.example/ --wap "$gateway" --trace
kill -TERM "$relay"
wait "$relay"
relay=
[ "$(find store -type f | wc -l)" -eq 4 ] || { echo "FAILED: not four messages stored"; failures=$((failures + 1)); }
wap_relay --wap-refuse 503
expect 1 "refused (the gateway $gateway refused the session: 0x63" "$mmsbrix" send m.mms --url http://a/ --wap "$gateway"
kill -TERM "$relay"
wait "$relay"
relay=

# A notification, as a gateway pushes it.
"$mmsbrix" listen --address 127.0.0.1 --port 0 --count 1 --store store > push.out 2> push.err &
relay=$!
for _ in $(seq 200); do grep -q listening push.err && break; sleep 0.05; done
port=$(sed -n 's/.*UDP port //p' push.err)
printf '\x01\x06\x03\xBE\xAF\x84\x8C\x82\x98N1\0\x8D\x90\x83http://mmsc/1\0' > "/dev/udp/127.0.0.1/$port"
wait "$relay" || { echo "FAILED: listen ended with $?"; failures=$((failures + 1)); }
relay=
grep -q 'm-notification-ind' push.out || { echo "FAILED: no notification shown"; cat push.out; failures=$((failures + 1)); }
expect 0 "http://mmsc/1" "$mmsbrix" show store/push.mms

echo "$failures failures"
[ "$failures" -eq 0 ]
