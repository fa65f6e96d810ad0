#!/usr/bin/env bash
# The files are 32-bit ones that need nothing but the system and one library of the compiler, and the
# library exports what the list says.   interface_test.sh LIBRARY PROGRAM LIST
set -euo pipefail
library=$1 program=$2 list=$3
objdump=i686-w64-mingw32-objdump
failed=0
allowed='^(advapi32|comdlg32|gdi32|kernel32|msvcrt|ole32|oleaut32|shell32|user32|wininet|ws2_32|mswsock|libgcc_s_dw2-1|mmsbrix)\.dll$'
for file in "$library" "$program"; do
  $objdump -f "$file" | grep -q 'pei-i386' || { echo "$file: no 32-bit program"; failed=1; }
  needs=$($objdump -p "$file" | sed -n 's/.*DLL Name: //p' | tr '[:upper:]' '[:lower:]')
  if other=$(grep -vE "$allowed" <<< "$needs"); then echo "$file needs $other"; failed=1; fi
done
# Inline functions and the instances of the standard library's templates come and go with the compiler;
# what callers rely on are the functions by plain names, and of each class what is exported at all.
exports=$($objdump -p "$library" | sed -n '/\[Ordinal\/Name Pointer\]/,/^$/p' |
  sed -nE 's/^.*\] (\+base\[ *[0-9]+\] +[0-9a-f]+ +)?([^ ]+)$/\2/p' | LC_ALL=C sort)
if ! diff <(grep -v '^#' "$list") <(printf '%s\n' "$exports") > differences; then
  echo "the exports differ from $list (< listed, > exported):"
  i686-w64-mingw32-c++filt < differences | head -40
  failed=1
fi
rm -f differences
decorated=$(grep -E '^_?MMS_.*@|^_MMS_' <<< "$exports" || true)
[ -z "$decorated" ] || { echo "decorated names: $decorated"; failed=1; }
exit "$failed"
