#!/usr/bin/env bash
# A password is in no output, trace, log or process list, and in no file but the one that holds it;
# a file that others can read is refused.   secrets_test.sh PROGRAM
set -euo pipefail
mmsbrix=$1
ulimit -S -c unlimited 2>/dev/null || true
folder=$(mktemp -d)
relay=
cleanup() {
  if [ -n "$relay" ]; then kill "$relay" 2>/dev/null || true; fi
  rm -rf "$folder"
}
trap cleanup EXIT
fail() { echo "$*" >&2; exit 1; }
user=ann password=Tr0ub4dor-and-3
encoded=$(printf '%s:%s' "$user" "$password" | base64)
(umask 077 && printf '%s:%s\n' "$user" "$password" >"$folder/credentials")
"$mmsbrix" compose --to +358401234567 --text Hei -o "$folder/m.mms"

"$mmsbrix" relay --listen 127.0.0.1:0 --credentials "$folder/credentials" --delay 1000 >"$folder/relay.log" 2>&1 &
relay=$!
for _ in $(seq 500); do grep -q listening "$folder/relay.log" && break; sleep 0.02; done
url=$(sed -n 's/^listening on //p' "$folder/relay.log")
[ -n "$url" ] || fail "the relay does not come up"

"$mmsbrix" send "$folder/m.mms" --url "$url" --credentials "$folder/credentials" --trace >"$folder/send.log" 2>&1 &
sending=$!
sleep 0.3
for process in "$sending" "$relay"; do
  tr '\0' ' ' <"/proc/$process/cmdline" >>"$folder/processes" || true
  grep -q 'Max core file size *0 ' "/proc/$process/limits" || fail "a core of process $process would have it"
done
wait "$sending" || fail "the message was not sent: $(cat "$folder/send.log")"
grep -q 'Authorization: Basic \*\*\*' "$folder/send.log" || fail "the trace shows no masked Authorization"
grep -q -- --credentials "$folder/processes" || fail "no process was looked at"

# Refused, with the same care: a wrong password, by the environment.
if MMSBRIX_USER=$user MMSBRIX_PASSWORD=wrong-$password "$mmsbrix" send "$folder/m.mms" --url "$url" --trace \
  >"$folder/refused.log" 2>&1; then fail "a wrong password was taken"; fi
grep -q 401 "$folder/refused.log" || fail "the refusal is not told: $(cat "$folder/refused.log")"

# In a URL and in headers of one's own.
"$mmsbrix" send "$folder/m.mms" --url "http://$user:$password@${url#http://}" --header "Cookie: sid=$password" \
  --header "X-Api-Key: $password" --trace >"$folder/own.log" 2>&1 || true
grep -q "http://$user:\*\*\*@.*)" "$folder/own.log" || fail "the trace does not show the URL: $(cat "$folder/own.log")"
grep -q 'Cookie: \*\*\*' "$folder/own.log" || fail "the trace shows no masked Cookie: $(cat "$folder/own.log")"

for secret in "$password" "$encoded" "$(printf '%s:wrong-%s' "$user" "$password" | base64)"; do
  if grep -rlF -- "$secret" "$folder" | grep -v '/credentials$'; then fail "a secret is in the files above"; fi
done

chmod 644 "$folder/credentials"
for verb in "send $folder/m.mms --url $url" "relay --listen 127.0.0.1:0"; do
  # shellcheck disable=SC2086
  if "$mmsbrix" $verb --credentials "$folder/credentials" >"$folder/open.log" 2>&1; then
    fail "$verb: a file that others can read was taken"
  fi
  grep -q 'others can read it' "$folder/open.log" || fail "$verb: $(cat "$folder/open.log")"
done
