#!/usr/bin/env bash
# Runs a command in a folder of its own while a relay listens; HOST and PORT in the command's
# arguments stand for the relay's.   with_relay.sh PROGRAM COMMAND [ARGUMENT...]
set -euo pipefail
mmsbrix=$1
shift
folder=$(mktemp -d)
trap 'kill "${relay:-}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
"$mmsbrix" relay --listen 127.0.0.1:0 --notify waiting > relay.log &
relay=$!
for _ in $(seq 200); do grep -q listening relay.log && break; sleep 0.05; done
address=$(sed -n 's#^listening on http://\(.*\)/#\1#p' relay.log)
export MMSBRIX_TEST_RELAY=$address
arguments=()
for argument in "$@"; do
  argument=${argument/#HOST/${address%:*}}
  arguments+=("${argument/#PORT/${address##*:}}")
done
"${arguments[@]}"
