#!/usr/bin/env bash
# The zip, unpacked somewhere: its tool runs without anything else beside it, and somebody else's programs are
# built against it, shared and static.   zip_test.sh BUILD-FOLDER SOURCE-FOLDER EMULATOR
set -euo pipefail
build=$1 source=$2 emulator=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
(cd "$build" && cpack -B "$scratch/zip") > log || { cat log; exit 1; }
cmake -E tar xf zip/*.zip
mv mmsbrix-*-windows-i686 mmsbrix
for file in LICENSE README.md include/mmsbrix/capi.h lib/libMmsbrix.dll.a lib/libmmsbrix.a; do [ -s "mmsbrix/$file" ]; done
[ ! -e mmsbrix/include/mmsbrix/wsp/octets.h ]

export WINEPATH=  # nothing of the build folder
"$emulator" mmsbrix/bin/mmsbrix.exe compose --to +358401234567 --text hello -o m.mms
"$emulator" mmsbrix/bin/mmsbrix.exe show m.mms | grep -q "To.*+358401234567"

cmake -G Ninja -S "$source/tests/consumer" -B consumer -DMmsbrix_DIR="$scratch/mmsbrix/lib/cmake/Mmsbrix" \
  -DCMAKE_TOOLCHAIN_FILE="$source/cmake/windows-i686.cmake" > log && cmake --build consumer >> log || { cat log; exit 1; }
cp consumer/consumer_{shared,static}.exe mmsbrix/bin
"$emulator" mmsbrix/bin/consumer_shared.exe
"$emulator" mmsbrix/bin/consumer_static.exe
