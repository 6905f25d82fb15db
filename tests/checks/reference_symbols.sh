#!/usr/bin/env bash
# Fails, listing them, when the core lacks any name that Debian's reference
# BLAS or CBLAS library for i386 exports: programs linked against those
# libraries must find every symbol here too (libblas.so.3 and libcblas.so.3
# in our build directory are links to the core).
# Usage: reference_symbols.sh <core library> [reference library ...]
# Exits 77 (skipped) when none of the reference libraries is installed.
set -u
core=$1
shift
refs=("$@")
[ ${#refs[@]} -gt 0 ] || refs=(/usr/lib/i386-linux-gnu/blas/libblas.so.3 /usr/lib/i386-linux-gnu/libcblas.so.3
  /usr/lib/i386-linux-gnu/blas/libcblas.so.3)
[ -f "$core" ] || { echo "FAIL: $core is missing"; exit 1; }

defined() { nm -D --defined-only "$1" | awk '{print $NF}' | sed 's/@.*//' | sort -u; }

found=0
fail=0
for ref in "${refs[@]}"; do
  [ -f "$ref" ] || continue
  found=1
  missing=$(comm -23 <(defined "$ref") <(defined "$core"))
  if [ -n "$missing" ]; then
    echo "FAIL: $(echo "$missing" | wc -l) names of $ref are missing from $core:"
    echo "$missing"
    fail=1
  else
    echo "reference_symbols: all $(defined "$ref" | wc -l) names of $ref are defined"
  fi
done
[ $found -eq 1 ] || { echo "no reference BLAS/CBLAS library installed"; exit 77; }
exit $fail
