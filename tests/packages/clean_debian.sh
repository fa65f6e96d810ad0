#!/usr/bin/env bash
# The packages on a Debian 12 that has nothing else: bootstraps one, installs the packages as a user would, opens
# the manual pages, types the tutorial, runs the examples in C, C++ and Python, and removes it all.
# By hand, as root, with a network, some minutes and 1 GB:
#   tests/packages/clean_debian.sh [BUILD-FOLDER [FOLDER]]
# It takes the packages of the build folder, build/release when not given.  The Debian is made in a new folder
# and removed at the end; one that is given is kept, and its Debian used again.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
command -v debootstrap >/dev/null || { echo "install debootstrap first" >&2; exit 2; }
[ "$(id -u)" -eq 0 ] || { echo "only root can bootstrap a Debian" >&2; exit 2; }
# What is mounted inside is taken away before anything is removed.
build=${1:-$source/build/release} own=${2:-} folder=${2:-$(mktemp -d)}
leave() {
  umount "$folder/root/proc" "$folder/root/dev" 2>/dev/null || true
  [ -n "$own" ] || rm -rf --one-file-system "$folder"
}
trap leave EXIT

debs=("$build"/*.deb)
[ -e "${debs[0]}" ] || { echo "make the packages first: (cd $build && cpack)" >&2; exit 2; }
if command -v lintian >/dev/null; then
  echo "== lintian"
  lintian --allow-root --fail-on error,warning "${debs[@]}"
fi
if [ ! -e "$folder/root/ready" ]; then
  mkdir -p "$folder"
  debootstrap --variant=minbase bookworm "$folder/root" > "$folder/log" ||
    { tail -20 "$folder/log"; exit 1; }
  touch "$folder/root/ready"
fi
root=$folder/root
rm -rf "$root/try"
mkdir "$root/try"
cp -r "${debs[@]}" "$source/examples" "$source/docs/tutorial.md" "$source/tests/packages/clean_debian_inside.sh" \
  "$source/tests/packages/try.sh" "$root/try"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
mountpoint -q "$root/dev" || mount --bind /dev "$root/dev"
env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 chroot "$root" bash /try/clean_debian_inside.sh
