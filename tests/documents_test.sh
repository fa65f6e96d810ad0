#!/usr/bin/env bash
# Runs the commands of the README and the documents as they stand: blocks marked "sh", those of a file one
# after another, in a folder with the examples.   documents_test.sh PROGRAM SOURCE-FOLDER
set -euo pipefail
mmsbrix=$1 source=$2
# Ports are as written, so they are of a network of its own where the system gives one.
if [ "${3:-}" != inside ]; then
  namespace=(unshare --net)
  [ "$(id -u)" -eq 0 ] || namespace+=(--map-root-user)
  if "${namespace[@]}" ip link set lo up 2>/dev/null; then
    exec "${namespace[@]}" bash -c 'ip link set lo up && exec "$0" "$@" inside' "$0" "$@"
  fi
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for document in "$source"/README.md "$source"/docs/*.md; do
  grep -q '^```sh$' "$document" || continue
  name=$(basename "$document" .md)
  mkdir "$folder/$name"
  cp -r "$source/examples" "$folder/$name"
  {
    echo 'set -euo pipefail; trap "kill \$(jobs -p) 2>/dev/null" EXIT'
    echo 'listening() { until (exec 3<> "/dev/tcp/127.0.0.1/$1") 2>/dev/null; do sleep 0.05; done; }'
    # What a user sees before typing on: a relay that listens.
    awk '/^```sh$/ {on=1; next} /^```$/ {on=0} on {print}
         on && / relay .*&( |$)/ {print "listening " (match($0, /127\.0\.0\.1:[0-9]+/) ? substr($0, RSTART + 10, RLENGTH - 10) : 8080)}' "$document"
  } > "$folder/$name.sh"
  commands=$(grep -c '^mmsbrix' "$folder/$name.sh")
  (cd "$folder/$name" && HOME=$folder XDG_CONFIG_HOME=$folder/config PATH=$(dirname "$mmsbrix"):$PATH \
    bash -x ../"$name.sh" > ../"$name.log" 2>&1) || { cat "$folder/$name.log"; echo "FAILED: $document"; exit 1; }
  echo "$document: $commands commands"
done
