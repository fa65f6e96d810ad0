#!/usr/bin/env bash
# Runs the examples against a relay, and compares them with what the README shows.
#   examples_test.sh PROGRAM EXAMPLES-BUILD-FOLDER SOURCE-FOLDER
set -euo pipefail
mmsbrix=$1 examples=$2 source=$3
folder=$(mktemp -d)
trap 'kill "${relay:-}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
# expect TEXT COMMAND...: the command succeeds and prints TEXT somewhere
expect() {
  local text=$1
  shift
  "$@" > output 2>&1 || { cat output; echo "FAILED: $*"; exit 1; }
  grep -q -- "$text" output || { cat output; echo "FAILED: no '$text' from $*"; exit 1; }
}

"$mmsbrix" relay --listen 127.0.0.1:0 --wap 127.0.0.1:0 --notify waiting > relay.log &
relay=$!
for _ in $(seq 200); do grep -q 'listening on wap' relay.log && break; sleep 0.05; done
address=$(sed -n 's#^listening on http://\(.*\)/#\1#p' relay.log)
host=${address%:*} port=${address##*:} photo=$source/examples/media/photo.jpg

output=$("$examples/compose_and_send" +358401234567 "$photo" http://mmsc.example/mms "$host" "$port")
echo "$output"
[ "$output" = "sent: 0x80 " ]
"$mmsbrix" show message.mms | grep -q 'image/jpeg'

gateway=$(sed -n 's#^listening on wap://##p' relay.log)
output=$("$examples/submit_by_wap" "${gateway%:*}" "${gateway##*:}" http://mmsc.example/mms message.mms 2> trace)
echo "$output"
[ "$output" = "accepted by the relay: " ]
grep -q '^s_Connect_cnf$' trace
if output=$("$examples/submit_by_wap" "${gateway%:*}" "${gateway##*:}" http://mmsc.example/mms none.mms 2> trace); then exit 1; fi
[ "$output" = "not submitted: the message cannot be read: File not found" ]

mkdir received
expect 'result 0xC8' "$examples/receive_and_extract" "$(find waiting -name "*-1.mms")" received "$host" "$port"
find received -type f -exec cmp {} "$photo" \;
[ "$(find received -type f | wc -l)" -eq 1 ]
grep -q '200: m-notifyresp-ind' relay.log

expect '^done: 0x80$' "$examples/compose_and_send_c" +358401234567 "$photo" http://m.example/ "$host" "$port"
expect '^4 parts' "$examples/slide_show" +358401234567 show.mms "$photo" "$photo"
expect 'parts: 4' "$mmsbrix" show show.mms
expect '^0 surprises$' "$examples/relay_tester" http://mmsc.example/mms "$host" "$port"
expect '^accepted' "$examples/progress_and_cancel" message.mms http://m.example/ "$host" "$port" 0 < /dev/null
! "$examples/progress_and_cancel" message.mms http://m.example/ "$host" "$port" 1 > output
grep -q '^not sent, code 12017' output

# The README shows the programs as they stand, without their first comment.
shown() { awk -v begin="\`\`\`$1" '$0 == begin {on=1; next} /^```$/ {on=0} on' "$source/README.md"; }
shown cpp | diff - <(sed '1,/^$/{/^\/\//d}' "$source/examples/compose_and_send.cpp")
shown c | diff - <(sed '1{/^\/\*/d}' "$source/examples/compose_and_send.c")
shown python | diff - <(sed '1{/^"""/d}' "$source/examples/compose_and_send.py")
