#!/usr/bin/env bash
# Installs a build into a scratch prefix and builds programs against it: by find_package, shared and
# static, and by pkg-config.   run.sh BUILD-FOLDER SOURCE-FOLDER COMPILER FLAGS
set -euo pipefail
build=$1 source=$2 compiler=$3 flags=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" > "$scratch/log"
cmake -G Ninja -S "$source/tests/consumer" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >> "$scratch/log" || { cat "$scratch/log"; exit 1; }
cmake --build "$scratch/build" >> "$scratch/log" || { cat "$scratch/log"; exit 1; }
"$scratch/build/consumer_shared"
"$scratch/build/consumer_static"

pc=$(find "$scratch/prefix" -name mmsbrix.pc -printf '%h')
export PKG_CONFIG_PATH=$pc
# shellcheck disable=SC2046,SC2086
"$compiler" -std=c++20 $flags "$source/tests/consumer/consumer.cpp" $(pkg-config --cflags --libs mmsbrix) \
  -Wl,-rpath,"$(pkg-config --variable=libdir mmsbrix)" -o "$scratch/by-pkg-config"
"$scratch/by-pkg-config"

# What is installed says nothing of the library's inner headers, and the tool runs from there.
[ ! -e "$scratch/prefix/include/mmsbrix/wsp/octets.h" ]
"$scratch/prefix/bin/mmsbrix" --version
