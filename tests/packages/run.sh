#!/usr/bin/env bash
# Makes the Debian packages of a build, has lintian look at them, and installs, uses and removes them in a
# copy of this system that vanishes afterwards: an overlay in a mount namespace, without network.
#   run.sh BUILD-FOLDER SOURCE-FOLDER
# 77 where the system gives no namespace, which is a failure under CI=true.
set -euo pipefail
build=$1 source=$2
if [ "${3:-}" != inside ]; then
  debs=$(mktemp -d)
  trap 'rm -rf "$debs"' EXIT
  (cd "$build" && cpack -G DEB -B "$debs" > "$debs/log" 2>&1) || { cat "$debs/log"; exit 1; }
  rm -rf "$debs/_CPack_Packages"
  if command -v lintian >/dev/null; then
    # Not at the static library of a build for debugging, which takes minutes: clean_debian.sh has a released one.
    find "$debs" -name '*.deb' -not -name '*-dev_*' -exec lintian --allow-root --fail-on error,warning {} +
  elif [ "${CI:-}" = true ]; then
    echo "lintian is not installed"
    exit 1
  fi
  namespace=(unshare --mount --net --propagation private)
  [ "$(id -u)" -eq 0 ] || namespace+=(--map-root-user)
  if ! "${namespace[@]}" true 2>/dev/null; then
    echo "no namespaces here"
    [ "${CI:-}" = true ] && exit 1
    exit 77
  fi
  DEBS=$debs "${namespace[@]}" "$0" "$build" "$source" inside
  exit
fi

# Inside: / is seen through the overlay, without this source tree and its builds.
mount -t tmpfs tmpfs /mnt
mkdir /mnt/upper /mnt/work /mnt/root
mount -t overlay overlay -o lowerdir=/,upperdir=/mnt/upper,workdir=/mnt/work /mnt/root
mkdir -p /mnt/root/root/try
cp -r "$DEBS"/*.deb "$source/examples" "$source/tests/packages/try.sh" /mnt/root/root/try
for hidden in "$source" "$build"; do
  if [ -d "/mnt/root$hidden" ]; then mount -t tmpfs tmpfs "/mnt/root$hidden" 2>/dev/null || true; fi
done
mount --bind /dev /mnt/root/dev
mount -t proc proc /mnt/root/proc 2>/dev/null || mount --bind /proc /mnt/root/proc
mount -t tmpfs tmpfs /mnt/root/tmp
if command -v ip >/dev/null; then ip link set lo up; fi
exec chroot /mnt/root /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
  bash /root/try/try.sh
