#!/usr/bin/env bash
# Runs one LAPACK test program (Debian's liblapack-test, linked with Debian's
# reference liblapack.so.3 beside it) over the BLAS in <blas dir>, and judges
# its report against the baseline: the same program and input over the
# reference BLAS. A run passes when the program completes, runs at least as
# many tests and reports no more failed tests, illegal-value/error-exit
# messages or non-zero INFO lines than the baseline does.
# Usage: run_lapack.sh <blas dir> <program> <input> <baseline file|-> [<runtime>]
# With "-" for the baseline the run prints its summary line and judges nothing
# (record_lapack_baseline.sh uses that).
set -u
lib=$1 program=$2 input=$3 baseline=$4 runtime=${5:-}
here=$(cd "$(dirname "$0")" && pwd)
lapack=$(dirname "$program")
[ -x "$program" ] || { echo "missing test program $program (package liblapack-test:i386)"; exit 1; }
[ -f "$lapack/liblapack.so.3" ] || { echo "missing $lapack/liblapack.so.3 (package liblapack3:i386)"; exit 1; }
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
path="$lib:$lapack"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# Confirm that the BLAS under test and the reference LAPACK answer.
resolved=$(LD_LIBRARY_PATH=$path ldd "$program")
for want in "$lib/libblas.so.3" "$lapack/liblapack.so.3"; do
  if ! echo "$resolved" | grep -q "=> $want "; then
    echo "FAIL: $program did not resolve $(basename "$want") to $want"; echo "$resolved"; exit 1
  fi
done
start=$(date +%s)
timeout 3000 env LD_PRELOAD="$runtime" LD_LIBRARY_PATH="$path" ZAR_KERNEL_PATH="${ZAR_KERNEL_PATH:-$lib}" "$program" < "$input" > report.txt 2>&1
rc=$?
seconds=$(( $(date +%s) - start ))
summary=$(bash "$here/lapack_summary.sh" < report.txt)
name="$(basename "$program") $(basename "$input")"
if [ "$baseline" = - ]; then
  echo "$name $summary rc=$rc seconds=$seconds"; exit 0
fi
# Show the lines that count, then the verdict.
grep -E ' out of |[Ii]llegal|ERROR EXIT| INFO|End of tests|Total time' report.txt | head -n 80
echo "$name: $summary (exit $rc, ${seconds}s)"
expect=$(awk -v p="$(basename "$program")" -v i="$(basename "$input")" '$1 == p && $2 == i' "$baseline")
[ -n "$expect" ] || { echo "FAIL: no baseline for $name in $baseline"; exit 1; }
echo "baseline: $expect"
if [ $rc -ne 0 ]; then tail -n 30 report.txt; echo "FAIL: exit status $rc"; exit 1; fi
status=0
for key in run failed illegal info complete; do
  got=$(echo "$summary" | sed -n "s/.*\<$key=\([0-9]*\).*/\1/p")
  want=$(echo "$expect" | sed -n "s/.*\<$key=\([0-9]*\).*/\1/p")
  if [ "$key" = complete ] || [ "$key" = run ]; then
    [ "$got" -ge "$want" ] || { echo "FAIL: $key=$got: the program ran fewer tests than over the reference BLAS ($want)"; status=1; }
  elif [ "$got" -gt "$want" ]; then
    echo "FAIL: $key=$got, more than the reference BLAS's $want"; status=1
  fi
done
[ $status -eq 0 ] || grep -B2 -A8 -E 'failed to pass|[Ii]llegal|ERROR EXIT| INFO' report.txt | head -n 120
exit $status
