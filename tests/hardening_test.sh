#!/usr/bin/env bash
# What was built carries the hardening of release builds: a position-independent program, relocations
# that are read-only before main, canaries on the stack, checked calls of the C library.
#   hardening_test.sh PROGRAM LIBRARY
set -euo pipefail
program=$1
library=$2
failed=0
need() {  # DESCRIPTION FILE PATTERN COMMAND...
  local description=$1 file=$2 pattern=$3
  shift 3
  # All of the output is read: a reader that leaves early would fail the writer.
  if "$@" "$file" 2>/dev/null | grep -E "$pattern" >/dev/null; then return; fi
  echo "$file: $description" >&2
  failed=1
}
need "is not position-independent" "$program" 'Type: +DYN' readelf -hW
for file in "$program" "$library"; do
  need "has no read-only relocations" "$file" 'GNU_RELRO' readelf -lW
  need "binds its symbols late" "$file" 'BIND_NOW|Flags:.* NOW' readelf -dW
  need "has no stack canaries" "$file" '__stack_chk_fail' readelf --dyn-syms -W
  need "calls nothing of the C library with its checks" "$file" '__(mem|str|v?snprintf|read|realpath)[a-z]*_chk' readelf --dyn-syms -W
  need "has an executable stack" "$file" 'GNU_STACK .* RW ' readelf -lW
done
exit "$failed"
