#!/usr/bin/env bash
# Installs a build into a temporary prefix, then builds the client against
# it twice (pkg-config, the CMake package) and runs both builds, with nothing
# pointing into the build tree: the installed core must find the installed
# kernel library next to itself.
# Usage: install_client.sh <build dir> <source dir> <libdir relative to prefix> [<runtime>]
# <runtime>: a library to load first (the sanitizer runtime of a sanitized build).
set -eu
build=$1 src=$2 libdir=$3 runtime=${4:-}
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
unset ZAR_KERNEL_PATH LD_LIBRARY_PATH
cmake --install "$build" --prefix "$prefix" > "$work/install.log"
missing=0
for f in "$libdir"/libzar_core.so.2 "$libdir"/libzar_avx.so.2 "$libdir"/libzar_core.so "$libdir"/libblas.so.3 \
         "$libdir"/libcblas.so.3 "$libdir"/pkgconfig/zar.pc "$libdir"/cmake/zar/zarConfig.cmake \
         include/cblas.h include/zar/blas.h include/zar/cblas_level3.h include/zar/control.h; do
  [ -e "$prefix/$f" ] || { echo "FAIL: $f was not installed"; missing=1; }
done
[ $missing -eq 0 ]

# The program must run on the installed core, not on the build tree's.
run() {
  local program=$1 resolved
  resolved=$(ldd "$program" | sed -n 's/.*libzar_core.so.2 => \(.*\) (0x.*/\1/p')
  echo "libzar_core.so.2 => $resolved"
  if [ -z "$resolved" ] || [ "$(readlink -f "$resolved")" != "$(readlink -f "$prefix/$libdir/libzar_core.so.2")" ]; then
    echo "FAIL: $program does not load the installed libzar_core.so.2"; exit 1
  fi
  LD_PRELOAD="$runtime" "$program"
}

echo "== pkg-config"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
pkg-config --cflags --libs zar
gcc $(pkg-config --cflags zar) "$here/client/client.c" -o "$work/client_pc" \
  $(pkg-config --libs zar) -Wl,-rpath,"$(pkg-config --variable=libdir zar)"
run "$work/client_pc"

echo "== CMake package"
cmake -S "$here/client" -B "$work/cmake" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$src/cmake/i686-linux-gnu.cmake" \
  -DCMAKE_PREFIX_PATH="$prefix" > "$work/configure.log" || { cat "$work/configure.log"; exit 1; }
cmake --build "$work/cmake" > "$work/build.log" || { cat "$work/build.log"; exit 1; }
run "$work/cmake/client"
