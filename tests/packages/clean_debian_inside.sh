#!/usr/bin/env bash
# Inside a bare Debian 12, for clean_debian.sh.
set -euo pipefail
cd /try
if [ "${1:-}" != offline ]; then
  echo "== apt install ./*.deb"
  apt-get update -q > log 2>&1 || tail -3 log
  # Manual pages, compilers and Python are what a reader of the README has.
  DEBIAN_FRONTEND=noninteractive apt-get install -y -q ./*.deb man-db gcc g++ pkg-config python3 iproute2 > log 2>&1 ||
    { tail -30 log; exit 1; }
  # The ports of the documents are as written, so they are of a network of its own.
  exec unshare --net bash -c 'ip link set lo up && exec bash ./clean_debian_inside.sh offline'
fi

echo "== man mmsbrix"
man mmsbrix | head -4
echo "== the tutorial, as written"
awk '/^```sh$/ {on = 1; next} /^```$/ {on = 0} on' tutorial.md > tutorial.sh
mkdir typed
cp -r examples typed
# A reader types more slowly than a relay starts.
sed -i 's/^\(mmsbrix relay .*&\)$/\1\nsleep 1/' tutorial.sh
(cd typed && bash -eo pipefail ../tutorial.sh > ../tutorial.log 2>&1) || { tail -20 tutorial.log; echo "FAILED: the tutorial"; exit 1; }
echo "$(grep -c '^mmsbrix' tutorial.sh) commands"
echo "== packages removed and installed again, completion, every manual page, the examples"
dpkg --purge python3-mmsbrix libmmsbrix-dev mmsbrix libmmsbrix1 > log 2>&1 || { cat log; exit 1; }
bash ./try.sh
echo "a clean Debian $(cat /etc/debian_version): all done"
