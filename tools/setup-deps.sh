#!/usr/bin/env bash
# Installs what the build, the tests and the benchmarks need from Debian's
# packages, and nothing when all of it is present already.
set -u
packages=(
  cmake ninja-build g++ gcc-multilib g++-multilib libc6-dev-i386 googletest binutils
  libblas3:i386 libblas-test:i386 libopenblas0-serial:i386 libgfortran5:i386
  liblapack3:i386 liblapack-test:i386 pkg-config libfftw3-dev:i386
  libsuitesparse-dev:i386 librsb-dev:i386 libgraphblas-dev:i386 libxbyak-dev
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo=sudo
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  $sudo dpkg --add-architecture i386
fi
# One index may fail while a mirror syncs; the packages still install.
$sudo apt-get update || echo "setup: apt-get update reported a problem; continuing"
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
