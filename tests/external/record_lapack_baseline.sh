#!/usr/bin/env bash
# Runs every LAPACK test program with every input LAPACK's own test driver
# uses (plus the balancing tests) over Debian's reference BLAS, and writes the
# baseline that the runs over zar are judged against:
#   <program> <input> failed=<n> illegal=<n> info=<n> complete=<0|1> rc=<n> seconds=<n>
# Usage: record_lapack_baseline.sh [<output file>] (default lapack_baseline.txt
# beside this script). Takes a while: every program runs once, one at a time.
set -u
here=$(cd "$(dirname "$0")" && pwd)
out=${1:-$here/lapack_baseline.txt}
lapack=/usr/lib/i386-linux-gnu/lapack
refblas=/usr/lib/i386-linux-gnu/blas
runs() {
  local p
  for p in s d c z; do
    echo "xlintst$p ${p}test.in"
    echo "xlintstrf$p ${p}test_rfp.in"
    case $p in d) echo "xlintstds dstest.in" ;; z) echo "xlintstzc zctest.in" ;; esac
    for i in nep sep se2 svd ${p}ec ${p}ed ${p}gg ${p}gd ${p}sb ${p}sg ${p}bb glm gqr gsv csd lse \
             ${p}bal ${p}bak ${p}gbal ${p}gbak; do
      echo "xeigtst$p $i.in"
    done
  done
}
tmp=$(mktemp)
runs | while read -r program input; do
  bash "$here/run_lapack.sh" "$refblas" "$lapack/$program" "$lapack/$input" - | tee -a "$tmp"
done
{
  echo "# LAPACK test programs over Debian's reference BLAS (libblas3 $(dpkg-query -W -f='${Version}' libblas3:i386),"
  echo "# liblapack3 $(dpkg-query -W -f='${Version}' liblapack3:i386)); written by record_lapack_baseline.sh."
  cat "$tmp"
} > "$out"
rm -f "$tmp"
