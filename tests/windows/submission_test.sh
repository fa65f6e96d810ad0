#!/usr/bin/env bash
# The Windows tool submits and fetches through the system's HTTP component and by WAP; the relay is
# this system's.   submission_test.sh LINUX-TOOL EMULATOR WINDOWS-TOOL
set -euo pipefail
linux=$1
windows=("$2" "$3")
folder=$(mktemp -d)
relays=()
trap 'kill "${relays[@]}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
fail() { echo "FAILED: $*" >&2; exit 1; }

# relay NAME ARGUMENT...: starts one; `address` is where it listens
relay() {
  local name=$1
  shift
  "$linux" relay --listen 127.0.0.1:0 "$@" > "$name.log" &
  relays+=($!)
  for _ in $(seq 200); do grep -q listening "$name.log" && break; sleep 0.05; done
  address=$(sed -n 's#^listening on http://\(.*\)/#\1#p' "$name.log" | head -1)
  wap=$(sed -n 's#^.*wap://\([0-9.:]*\).*#\1#p' "$name.log" | head -1)
}
# sent STATUS TEXT ARGUMENT...: `send` ends so and says TEXT somewhere
sent() {
  local status=$1 text=$2 output got=0
  shift 2
  output=$("${windows[@]}" send "$@" 2>&1 </dev/null | tr -d '\r'; exit "${PIPESTATUS[0]}") || got=$?
  [ "$got" -eq "$status" ] && [[ $output == *"$text"* ]] ||
    fail "send $*: status $got (wanted $status), wanted '$text' in: $output"
}

head -c 60000 /dev/urandom > noise.bin
"${windows[@]}" compose --to +358401234567 --text 'terveisiä' --attach noise.bin -o hi.mms

mkdir kept kept-by-wap
relay plain --store kept
sent 0 "" --proxy "$address" --url http://mmsc.example/mms hi.mms
sent 0 "" --url "http://$address/mms" hi.mms
for message in kept/*; do cmp hi.mms "$message" || fail "the relay got other octets"; done
[ "$(find kept -type f | wc -l)" -eq 2 ] || fail "the relay kept $(ls kept)"
sent 1 "File not found" --proxy "$address" --url http://mmsc.example/mms no-such-file.mms
sent 1 "The URL" --proxy "$address" --url 'ftp://mmsc.example/mms' hi.mms
sent 1 "Failed to connect to the gateway" --proxy 127.0.0.1:1 --url http://mmsc.example/mms hi.mms

relay refusing --status 0x84 --text 'Out of money'
sent 1 "Out of money" --proxy "$address" --url http://mmsc.example/mms hi.mms
relay busy --http-status 503
sent 1 "The service is temporarily overloaded." --proxy "$address" --url http://mmsc.example/mms hi.mms

relay wap --wap 127.0.0.1:0 --store kept-by-wap
[ -n "$wap" ] || fail "no WAP address in: $(cat wap.log)"
sent 0 "" --wap "$wap" --url http://mmsc.example/mms hi.mms
cmp hi.mms kept-by-wap/* || fail "the relay got other octets by WAP"
