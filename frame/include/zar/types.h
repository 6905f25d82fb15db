// Element types and their traits, shared by every family.
#pragma once
#include <cstddef>
#include <cstdint>

namespace zar {

// Complex element: real part first, as stored in caller memory. The
// arithmetic is written out where an order of operations is fixed; there are
// deliberately no operators here.
template <class R> struct cx {
  R re, im;
};
using c32 = cx<float>;
using c64 = cx<double>;
static_assert(sizeof(c32) == 8 && sizeof(c64) == 16);

template <class T> struct elem;
template <> struct elem<float> {
  using real = float;
  static constexpr bool complex = false;
  static constexpr char letter = 's';
  static constexpr char upper = 'S';
};
template <> struct elem<double> {
  using real = double;
  static constexpr bool complex = false;
  static constexpr char letter = 'd';
  static constexpr char upper = 'D';
};
template <> struct elem<c32> {
  using real = float;
  static constexpr bool complex = true;
  static constexpr char letter = 'c';
  static constexpr char upper = 'C';
};
template <> struct elem<c64> {
  using real = double;
  static constexpr bool complex = true;
  static constexpr char letter = 'z';
  static constexpr char upper = 'Z';
};
template <class T> using real_t = typename elem<T>::real;
template <class T> inline constexpr bool is_complex_v = elem<T>::complex;

// Option characters are case-insensitive: clear the 0x20 bit and compare with
// the upper-case letter.
inline constexpr char opt_upper(const char* c) { return static_cast<char>(*c & ~0x20); }

// Start of a vector walked with increment inc: a negative increment starts at
// position (1 - n) * inc, so element pairing matches the published BLAS rule.
inline constexpr std::ptrdiff_t vec_start(int n, int inc) {
  return inc < 0 ? static_cast<std::ptrdiff_t>(1 - n) * inc : 0;
}

// a + off elements. The offset is formed in 64-bit arithmetic and added as
// an unsigned byte count, so that an array spanning more than 2 GiB of the
// address space (a large leading dimension or increment) never forms a
// wrapped, negative 32-bit offset. For block and column starts, not inner
// loops.
template <class T> inline T* offset(T* a, long long off) {
  return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(a) +
                              static_cast<std::uintptr_t>(off * static_cast<long long>(sizeof(T))));
}
// Element (i, j) of a column-major matrix with leading dimension ld.
template <class T> inline T* at(T* a, long long i, long long j, long long ld) { return offset(a, i + j * ld); }

}  // namespace zar
