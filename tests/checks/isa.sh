#!/usr/bin/env bash
# Scans the disassembly for instructions beyond what each library may use.
#   kernel library: AVX and older only (no AVX2, FMA, F16C, AVX-512, BMI).
#   core library, tools: no AVX at all; the core decides whether AVX exists.
# Usage: isa.sh <file> kernel|core
set -u
file=$1 kind=$2
dis=$(objdump -d --no-show-raw-insn -M att "$file" | awk -F'\t' 'NF >= 2 {print $2}')
[ -n "$dis" ] || { echo "FAIL: no disassembly for $file"; exit 1; }

beyond_avx=(
  # FMA3 and FMA4
  '^v(fn?m(add|sub)|fmaddsub|fmsubadd)[0-9a-z]*'
  # AVX2: new permutes, broadcasts from a register, gathers, variable shifts, masked integer moves
  '^vperm(d|q|ps|pd) ' '^vperm2i128' '^v(inserti|extracti)128' '^vpbroadcast' '^vp?gather' '^vpblendd'
  '^vps(ll|rl|ra)v[dqw]' '^vpmaskmov' '^vbroadcasts[sd] +%xmm' '^vbroadcasti128'
  # AVX2: integer operations on 256-bit registers (AVX has them on 128 bits
  # only; vpermil*, vperm2f128 and vptest are AVX floating-point forms)
  '^vp(?!ermil|test|erm2f128)[a-z0-9]* .*%ymm'
  # AVX-512: zmm registers, mask registers, EVEX-only forms
  '%zmm' '%k[0-7]' '\{1to' '^kmov' '^vpternlog' '^valign' '^vpcompress' '^vpexpand'
  # F16C, BMI1, BMI2, LZCNT, ADX, MOVBE
  '^vcvt(ph2ps|ps2ph)' '^(andn|bextr|blsi|blsmsk|blsr|bzhi|mulx|pdep|pext|rorx|sarx|shlx|shrx|lzcnt|tzcnt|adcx|adox|movbe) '
)
any_avx=('^v[a-z]' '%ymm')

patterns=()
case $kind in
  kernel) patterns=("${beyond_avx[@]}") ;;
  core) patterns=("${beyond_avx[@]}" "${any_avx[@]}") ;;
  *) echo "usage: isa.sh <file> kernel|core"; exit 2 ;;
esac

fail=0
for p in "${patterns[@]}"; do
  hits=$(printf '%s\n' "$dis" | grep -P -- "$p" | head -n 3)
  if [ -n "$hits" ]; then
    echo "FAIL: $file ($kind) contains instructions matching /$p/:"; echo "$hits"; fail=1
  fi
done
n=$(printf '%s\n' "$dis" | wc -l)
[ $fail -eq 0 ] && echo "isa: $file: $n instructions, none beyond what a $kind build may use"
exit $fail
