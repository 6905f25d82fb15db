#!/usr/bin/env bash
# Runs one reference BLAS test program on zar and judges its report.
# Usage: run_reference.sh <zar lib dir> <program> [<input file> [<runtime>]]
# <runtime>: a library to load first (the sanitizer runtime of a sanitized build).
# The Level-2 and Level-3 programs read their parameters from an input file
# on standard input and write a summary file named in it; Level-1 programs
# print to standard output. A run fails when the program exits non-zero,
# stops early, or reports a failed test or a failed error-exit check.
set -u
lib=$1 program=$2 input=${3:-} runtime=${4:-}
[ -x "$program" ] || { echo "missing test program $program (package libblas-test:i386)"; exit 1; }
# ZAR_TEST_PRELOAD: a library preloaded into the 32-bit program only (this
# script's own 64-bit helpers could not load it).
preload="$runtime ${ZAR_TEST_PRELOAD:-}"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
if [ -n "$input" ]; then
  cp "$input" input.in
  timeout 600 env LD_PRELOAD="$preload" LD_LIBRARY_PATH="$lib" ZAR_KERNEL_PATH="$lib" "$program" < input.in > stdout.txt 2>&1
else
  timeout 600 env LD_PRELOAD="$preload" LD_LIBRARY_PATH="$lib" ZAR_KERNEL_PATH="$lib" "$program" > stdout.txt 2>&1 < /dev/null
fi
rc=$?
report=$(cat stdout.txt; for f in *.out *.SUMM; do [ -f "$f" ] && cat "$f"; done 2>/dev/null)
echo "$report" | tail -n 60
# Confirm that zar, not the system BLAS, answered.
if ! LD_LIBRARY_PATH=$lib ldd "$program" | grep -q "$lib/libblas.so.3"; then
  echo "FAIL: $program did not resolve libblas.so.3 to $lib"; exit 1
fi
if [ $rc -ne 0 ]; then echo "FAIL: exit status $rc"; exit 1; fi
if echo "$report" | grep -Eiq 'FAIL|ERROR EXIT|NOT PASSED|\*\*\*\*\* FATAL|ILLEGAL|STOPPED|ABNORMAL'; then
  echo "FAIL: the program reported failures"; exit 1
fi
if ! echo "$report" | grep -Eiq 'PASS'; then echo "FAIL: no PASS in the report"; exit 1; fi
exit 0
