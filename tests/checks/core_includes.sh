#!/usr/bin/env bash
# The core depends on the kernel library only through the frame's contract
# headers (frame/include): every quoted include of a file under core/ must
# resolve to a header under core/ or frame/include, never to a kernel
# family's private header (blas/, lapack/, ...).
# Usage: core_includes.sh <source root>
set -u
root=$(cd "$1" && pwd)
bad=0
checked=0
while IFS= read -r file; do
  dir=$(dirname "$file")
  while IFS= read -r inc; do
    checked=$((checked + 1))
    found=
    for base in "$dir" "$root/core/src" "$root/core/include" "$root/frame/include" "$root"; do
      if [ -f "$base/$inc" ]; then found=$(realpath "$base/$inc"); break; fi
    done
    case $found in
      "$root"/core/* | "$root"/frame/include/*) ;;
      "") echo "FAIL: ${file#$root/} includes \"$inc\", which is no header of core/ or frame/include"; bad=1 ;;
      *) echo "FAIL: ${file#$root/} includes ${found#$root/}, outside core/ and frame/include"; bad=1 ;;
    esac
  done < <(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([^"]*\)".*/\1/p' "$file")
done < <(find "$root/core" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \))
[ "$checked" -gt 0 ] || { echo "FAIL: no include found under $root/core"; exit 1; }
[ $bad = 0 ] && echo "core includes: $checked checked, all from core/ or frame/include"
exit $bad
