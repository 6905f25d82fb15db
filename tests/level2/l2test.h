// Helpers of the Level-2 tests: random data for the four element types,
// bit comparison, and extended-precision complex arithmetic for the
// reference solutions.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "blas/level2/level2.h"
#include "zar/types.h"

namespace l2t {

using zar::c32;
using zar::c64;

template <class T> T rnd(std::mt19937& g, double lo = -1, double hi = 1) {
  std::uniform_real_distribution<double> u(lo, hi);
  if constexpr (zar::is_complex_v<T>) {
    using R = zar::real_t<T>;
    const R re = static_cast<R>(u(g));
    return T{re, static_cast<R>(u(g))};
  } else {
    return static_cast<T>(u(g));
  }
}
template <class T> std::vector<T> rnd_vec(size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::vector<T> v(n);
  for (auto& e : v) e = rnd<T>(g);
  return v;
}
template <class T> T from(double re, double im = 0) {
  if constexpr (zar::is_complex_v<T>) return T{static_cast<zar::real_t<T>>(re), static_cast<zar::real_t<T>>(im)};
  else return static_cast<T>(re);
}
template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}
template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

// long double complex, the reference arithmetic
struct lc {
  long double re = 0, im = 0;
};
inline lc operator+(lc a, lc b) { return {a.re + b.re, a.im + b.im}; }
inline lc operator-(lc a, lc b) { return {a.re - b.re, a.im - b.im}; }
inline lc operator*(lc a, lc b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline lc operator/(lc a, lc b) {
  const long double d = b.re * b.re + b.im * b.im;
  return {(a.re * b.re + a.im * b.im) / d, (a.im * b.re - a.re * b.im) / d};
}
inline lc conj(lc a) { return {a.re, -a.im}; }
inline long double mag(lc a) { return std::sqrt(a.re * a.re + a.im * a.im); }
template <class T> lc widen(T v) {
  if constexpr (zar::is_complex_v<T>) return {v.re, v.im};
  else return {v, 0};
}
// the larger error, NaN counting as infinite (std::max would drop it)
inline double worse(double w, long double e) { return std::isnan(e) ? INFINITY : std::max<double>(w, e); }
// unit roundoff of the element's real type
template <class T> double eps() { return std::numeric_limits<zar::real_t<T>>::epsilon(); }

// start of a vector of n elements with increment inc (published rule)
inline std::ptrdiff_t start(int n, int inc) { return inc < 0 ? static_cast<std::ptrdiff_t>(1 - n) * inc : 0; }
// storage for a vector of n elements with increment inc
inline size_t span(int n, int inc) { return n <= 0 ? 1 : static_cast<size_t>(1 + static_cast<size_t>(n - 1) * std::abs(inc)); }

}  // namespace l2t
