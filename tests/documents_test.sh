#!/usr/bin/env bash
# Runs the commands of the README and the documents as they stand: blocks marked "sh", those of a file one
# after another, in a folder with the examples.  A block that nothing runs is a failure, and so is a name
# of a test or subcommand that there is not.   documents_test.sh PROGRAM SOURCE-FOLDER
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
fail() { echo "FAILED: $*"; exit 1; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Commands that cannot be run here, and what runs them instead: a file of the sources that names the word, or
# the reason why nothing does.
elsewhere=(
  "scripts/demo|.ci/run|scripts/demo"
  "scripts/test|.ci/run|scripts/test"
  "scripts/check|.ci/run|scripts/check"
  "scripts/fuzz|.ci/run|scripts/fuzz"
  "scripts/windows|.ci/run|scripts/windows"
  "scripts/bench|wants a quiet machine"
  "scripts/setup build|scripts/demo|scripts/setup build"
  "cmake --preset release -DMMSBRIX_BUILD_TESTS=OFF && cmake --build --preset release|scripts/demo|-DMMSBRIX_BUILD_TESTS=OFF"
  "cmake --install build/release --prefix /usr/local && ldconfig|tests/consumer/run.sh|cmake --install"
  "(cd build/release && cpack) && apt install ./build/release/*.deb|tests/packages/run.sh|cpack"
)
# runsElsewhere BLOCK: every line of it is one of those; what they name is kept in "named".
named=
runsElsewhere() {
  local line entry who word found
  while read -r line; do
    line=$(sed 's/ *#.*//' <<< "$line")
    [ -n "$line" ] || continue
    found=
    for entry in "${elsewhere[@]}"; do
      IFS='|' read -r found who word <<< "$entry"
      [ "$line" = "$found" ] || { found=; continue; }
      [ -z "$word" ] || grep -qF -- "$word" "$source/$who" || fail "$who does not run $word"
      named+="$line|"
      break
    done
    [ -n "$found" ] || return 1
  done < "$1"
}

for document in "$source"/README.md "$source"/CONTRIBUTING.md "$source"/docs/*.md; do
  name=$(basename "$document" .md)
  mkdir -p "$folder/$name"
  # Every block has a language; those of the programs are compared with the examples by their test.
  awk '/^```/ {on = !on; if (on && $0 !~ /^```(sh|text|cpp|c|python)$/) print FILENAME ":" FNR ": " $0}
       !on && /^    [^ ]/ && before == "" {print FILENAME ":" FNR ": an indented block"}
       {before = $0} on && /^```(cpp|c|python)$/ && FILENAME !~ /README/ {print FILENAME ":" FNR ": nothing runs this"}' \
    "$document" > "$folder/odd"
  [ ! -s "$folder/odd" ] || { cat "$folder/odd"; fail "blocks without a test"; }
  awk -v to="$folder/$name/block" '/^```sh$/ {on = 1; ++n; next} /^```$/ {on = 0} on {print > (to sprintf("%03d", n))}' \
    "$document"
  cp -r "$source/examples" "$folder/$name"
  echo 'set -euo pipefail; trap "kill \$(jobs -p) 2>/dev/null || true" EXIT
    listening() { until (exec 3<> "/dev/tcp/127.0.0.1/$1") 2>/dev/null; do sleep 0.05; done; }' > "$folder/$name.sh"
  for block in "$folder/$name"/block*; do
    if [ ! -e "$block" ] || runsElsewhere "$block"; then continue; fi
    # What a user sees before typing on: a relay that listens.
    awk '{print} / relay .*&( |$)/ {print "listening " (match($0, /127\.0\.0\.1:[0-9]+/) ? substr($0, RSTART + 10, RLENGTH - 10) : 8080)}' \
      "$block" >> "$folder/$name.sh"
  done
  (cd "$folder/$name" && HOME=$folder XDG_CONFIG_HOME=$folder/config PATH=$(dirname "$mmsbrix"):$PATH \
    bash -x ../"$name.sh" > ../"$name.log" 2>&1) || { cat "$folder/$name.log"; fail "$document"; }

  # Names in the text: tests, and subcommands with their options.
  grep -oE '`[^`]*ctest [^`]*-R [^`]*`' "$document" | sed -E "s/.*-R '?([^'\` ]*).*/\1/" | sort -u > "$folder/tests" || true
  while read -r tests; do
    [[ $tests =~ ^[A-Z]+$ ]] || grep -rqE "(TEST(_F|_P)?\\(|NAME )[^)]*($tests)" "$source"/tests "$source"/fuzz ||
      fail "$document: no test $tests"
  done < "$folder/tests"
  grep -oE '`mmsbrix [a-z][^`]*`' "$document" | tr -d '`' > "$folder/uses" || true
  while read -r _ subcommand rest; do
    "$mmsbrix" "$subcommand" --help > "$folder/help" || fail "$document: no subcommand $subcommand"
    for option in $(grep -oE -- '(^| )--[a-z-]+' <<< "$rest" || true); do
      grep -q -- "$option" "$folder/help" || fail "$document: $subcommand has no $option"
    done
  done < "$folder/uses"
  echo "$document: $(grep -c '^mmsbrix' "$folder/$name.sh" || true) commands"
done
for entry in "${elsewhere[@]}"; do
  [[ $named == *"${entry%%|*}|"* ]] || fail "no document says ${entry%%|*}"
done
