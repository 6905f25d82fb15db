#!/usr/bin/env bash
# Checks what the two libraries export and import.
#   kernel library: only zar_<domain>_avx_<routine> (the routine part keeps the
#     mixed case of names such as Iotensor_create), zar_<domain>_<routine>_avx
#     (sparse, spblas and graph), dll_cpu_version, the GEMM tables and the FFT
#     memory hooks; it imports from the core only zar_serv_* services and the
#     dispatching front ends.
#   core library: only zar_* (services, front ends, control), cblas_* and
#     Fortran names (lower case, one trailing underscore; words inside may
#     be joined by one, as in dgemm_batch_), and the reference CBLAS
#     globals RowMajorStrg and CBLAS_CallFromC.
# Usage: exports.sh <lib directory>
set -u
lib=$1
kernel=$lib/libzar_avx.so.2
core=$lib/libzar_core.so.2
fail=0
for f in "$kernel" "$core"; do
  [ -f "$f" ] || { echo "FAIL: $f is missing"; exit 1; }
done

domains='blas|lapack_ps|xblas|dft|pdepl|pdett|trans|conv|spblas|sparse|graph'
kernel_rule="^(zar_($domains)_avx_[A-Za-z0-9_]+|zar_(spblas|sparse|graph)_[a-z0-9_]+_avx|dll_cpu_version|zar_avx_[sdcz]_(all|opt)_gemm_ker|dfti_(malloc|calloc|allocate|free|deallocate))\$"
core_rule='^(zar_[A-Za-z0-9_]+|cblas_[a-z0-9_]+|[a-z]([a-z0-9_]*[a-z0-9])?_|RowMajorStrg|CBLAS_CallFromC)$'

defined() { nm -D --defined-only "$1" | awk '{print $NF}' | sed 's/@.*//' | sort -u; }

n=$(defined "$kernel" | wc -l)
bad=$(defined "$kernel" | grep -Ev "$kernel_rule")
if [ -n "$bad" ]; then
  echo "FAIL: $kernel exports names outside its naming rules:"; echo "$bad" | head -n 20; fail=1
fi
bad=$(defined "$core" | grep -Ev "$core_rule")
if [ -n "$bad" ]; then
  echo "FAIL: $core exports names outside its naming rules:"; echo "$bad" | head -n 20; fail=1
fi

# Imports of the kernel library that the core must provide.
core_imports=$(nm -D --undefined-only "$kernel" | awk '{print $NF}' | sed 's/@.*//' | grep '^zar_' | sort -u)
bad=$(echo "$core_imports" | grep -Ev '^(zar_serv_[a-z0-9_]+|zar_(blas|lapack|dft|trans|sparse|conv)_[a-z0-9_]+|zar__blas_[a-z0-9_]+)$' | grep -v '^$')
if [ -n "$bad" ]; then
  echo "FAIL: $kernel imports names that are not services or front ends:"; echo "$bad"; fail=1
fi
missing=$(comm -23 <(echo "$core_imports" | grep -v '^$') <(defined "$core"))
if [ -n "$missing" ]; then
  echo "FAIL: the core does not provide what the kernels import:"; echo "$missing"; fail=1
fi

# The kernel library depends on the core by its soname only.
if ! readelf -d "$kernel" | grep -q 'NEEDED.*\[libzar_core.so.2\]'; then
  echo "FAIL: $kernel does not name libzar_core.so.2 as a dependency"; fail=1
fi

[ $fail -eq 0 ] && echo "exports: kernel library $n names, all within the naming rules"
exit $fail
