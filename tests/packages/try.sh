#!/usr/bin/env bash
# In a system of its own: the packages beside this file install, work and leave nothing behind.
set -euo pipefail
cd "$(dirname "$0")"
# Reads to the end, so that nothing before it in a pipe is cut off.
said() { grep -- "$1" > /dev/null || { echo "FAILED: no '$1'"; exit 1; }; }

find /usr /etc /var/lib -xdev -name '*mmsbrix*' -not -path '/var/lib/dpkg/*' > before
dpkg -i --path-include="/usr/share/man/*" ./*.deb > log || { cat log; exit 1; }
dpkg --verify libmmsbrix1 libmmsbrix-dev mmsbrix python3-mmsbrix
dpkg-query -W -f '${Depends}\n' mmsbrix | said 'libmmsbrix1 (= '
dpkg-query -W -f '${Depends}\n' libmmsbrix1 | said 'libcurl4 (>= '

mmsbrix --version | said '^mmsbrix [0-9]'
man mmsbrix | said 'XDG_CONFIG_HOME'
for subcommand in $(man mmsbrix | grep -o 'mmsbrix-[a-z]*(1)' | sort -u | sed 's/mmsbrix-\(.*\)(1)/\1/'); do
  mmsbrix "$subcommand" --help > help || { echo "FAILED: $subcommand"; exit 1; }
  MANWIDTH=200 man "mmsbrix-$subcommand" > page
  for option in $(grep -o -- '^  .*--[a-z-]*' help | grep -o -- '--[a-z-]*'); do said "$option" < page; done
done
# completed WORD...: what bash offers for the last word
completed() {
  bash -c 'source /usr/share/bash-completion/completions/mmsbrix; COMP_WORDS=(mmsbrix "$@")
    COMP_CWORD=$#; compopt() { :; }; _mmsbrix; echo "${COMPREPLY[@]}"' completed "$@"
}
completed send --oper | said '^--operator$'
completed compose -o x --priority '' | said '^low normal high$'
completed compose --body = r | said '^related$'
completed relay --status Error-uns | said '^Error-unspecified Error-unsupported-message$'
completed relay --store /va | said '^/var$'
completed send --url ht | said '^$'
completed manual pre | said '^preview$'
mmsbrix config work --url http://mmsc.example/ > log
completed send --profile w | said '^work$'

mmsbrix relay > relay.log &
relay=$!
for _ in $(seq 200); do grep -q listening relay.log && break; sleep 0.05; done
gcc examples/compose_and_send.c $(pkg-config --cflags --libs mmsbrix) -o in-c
./in-c +358401234567 examples/media/photo.jpg http://mmsc.example/mms 127.0.0.1 8080 | said '^done: 0x80'
/usr/bin/python3 examples/compose_and_send.py +358401234567 examples/media/photo.jpg \
  http://mmsc.example/mms 127.0.0.1:8080 | said '^sent: response status 0x80'
g++ -std=c++20 examples/compose_and_send.cpp $(pkg-config --cflags --libs mmsbrix) -o in-cpp
./in-cpp +358401234567 examples/media/photo.jpg http://mmsc.example/mms 127.0.0.1 8080 | said '^sent: 0x80'
g++ -std=c++20 -DMMSBRIX_STATIC examples/compose_and_send.cpp /usr/lib/libmmsbrix.a \
  $(pkg-config --libs libcurl libxml-2.0) -o in-cpp-static
./in-cpp-static +358401234567 examples/media/photo.jpg http://mmsc.example/mms 127.0.0.1 8080 | said '^sent: 0x80'
kill "$relay"

dpkg --purge python3-mmsbrix libmmsbrix-dev mmsbrix libmmsbrix1 > log 2>&1 || { cat log; exit 1; }
if grep -i warning log; then exit 1; fi
find /usr /etc /var/lib -xdev -name '*mmsbrix*' -not -path '/var/lib/dpkg/*' | diff before -
! ldconfig -p | grep mmsbrix
echo "installed, used and removed"
