#!/usr/bin/env bash
# Runs the examples against a relay, and compares them with what the README shows.
#   examples_test.sh PROGRAM EXAMPLES-BUILD-FOLDER SOURCE-FOLDER
set -euo pipefail
mmsbrix=$1 examples=$2 source=$3
folder=$(mktemp -d)
trap 'kill "${relay:-}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"

"$mmsbrix" relay --listen 127.0.0.1:0 > relay.log &
relay=$!
for _ in $(seq 200); do grep -q listening relay.log && break; sleep 0.05; done
address=$(sed -n 's#^listening on http://\(.*\)/#\1#p' relay.log)

output=$("$examples/compose_and_send" +358401234567 "$source/examples/media/photo.jpg" \
  http://mmsc.example/mms "${address%:*}" "${address##*:}")
echo "$output"
[ "$output" = "sent: 0x80 " ]
"$mmsbrix" show message.mms | grep -q 'image/jpeg'

# The README shows the program as it stands, without its first comment.
awk '/^```cpp$/ {on=1; next} /^```$/ {on=0} on' "$source/README.md" > readme.cpp
sed '1,/^$/ { /^\/\// d }' "$source/examples/compose_and_send.cpp" > example.cpp
diff readme.cpp example.cpp
