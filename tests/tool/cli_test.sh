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
for verb in compose show send relay demo; do expect 0 "Options" "$mmsbrix" "$verb" --help; done
expect 2 "" "$mmsbrix"
expect 2 "" "$mmsbrix" frobnicate
expect 2 "--output is required" "$mmsbrix" compose --to +1 --text hi
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
expect 1 "error 12029: Failed to connect to the gateway" "$mmsbrix" send m.mms --url "$url"

echo "$failures failures"
[ "$failures" -eq 0 ]
