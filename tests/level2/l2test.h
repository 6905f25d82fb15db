// Helpers of the Level-2 tests: random data for the four element types,
// bit comparison, and extended-precision complex arithmetic for the
// reference solutions.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "zar/level2.h"
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

// ---- the kernels under test, per element type (complex types hold the
// Hermitian kernels under the symmetric names, and geru under ger)
template <class T> struct kern;
#define L2T_KERN_COMMON(t)                                              \
  static constexpr auto gemv = &zar_blas_avx_x##t##gemv;                \
  static constexpr auto gemv_cnr = &zar_blas_avx_x##t##gemv_cnr;        \
  static constexpr auto front_gemv = &zar_blas_##t##gemv;               \
  static constexpr auto trsv = &zar_blas_avx_x##t##trsv;                \
  static constexpr auto trsv_cnr = &zar_blas_avx_x##t##trsv_cnr;        \
  static constexpr auto trmv = &zar_blas_avx_x##t##trmv;                \
  static constexpr auto trmv_cnr = &zar_blas_avx_x##t##trmv_cnr;        \
  static constexpr auto trmv_in = &zar_blas_avx_##t##trmv_in;           \
  static constexpr auto trmv_rows = &zar_blas_avx_x##t##trmv_in_thread; \
  static constexpr auto tbmv = &zar_blas_avx_##t##tbmv;                 \
  static constexpr auto tbmv_f = &zar_blas_avx_##t##tbmv_f;             \
  static constexpr auto tpmv = &zar_blas_avx_##t##tpmv;                 \
  static constexpr auto tbsv = &zar_blas_avx_##t##tbsv;                 \
  static constexpr auto tbsv_f = &zar_blas_avx_##t##tbsv_f;             \
  static constexpr auto tbsv_cnr = &zar_blas_avx_##t##tbsv_cnr;         \
  static constexpr auto tpsv = &zar_blas_avx_##t##tpsv;
#define L2T_KERN_SYM(t, ger_, sy, pfx)                                  \
  static constexpr auto ger = &zar_blas_avx_x##t##ger_;                 \
  static constexpr auto symv = &zar_blas_avx_##pfx##t##sy##mv;          \
  static constexpr auto syr = &zar_blas_avx_##pfx##t##sy##r;            \
  static constexpr auto syr_cnr = &zar_blas_avx_##pfx##t##sy##r_cnr;    \
  static constexpr auto syr_t = &zar_blas_avx_##pfx##t##sy##r_in_thread; \
  static constexpr auto syr_tc = &zar_blas_avx_##pfx##t##sy##r_in_thread_cnr; \
  static constexpr auto syr2 = &zar_blas_avx_##pfx##t##sy##r2;          \
  static constexpr auto syr2_t = &zar_blas_avx_##pfx##t##sy##r2_in_thread; \
  static constexpr auto syr2_tc = &zar_blas_avx_##pfx##t##sy##r2_in_thread_cnr;
// a fixed case of the triangular solve and its name ("unn", ...)
template <class T> struct trsv_case {
  const char* name;
  void (*fn)(ZAR_L2_TRCASE_ARGS(T));
};
#define L2T_CASE(t, T, u, tr, d) {#u #tr #d, &zar_blas_avx_##t##trsv_##u##tr##d},
#define L2T_KERN_REAL(t, T, R)                                                           \
  template <> struct kern<T> {                                                           \
    L2T_KERN_COMMON(t)                                                                   \
    L2T_KERN_SYM(t, ger, sy, x)                                                          \
    static std::vector<trsv_case<T>> cases() { return {ZAR_L2_TRSV_REAL_CASES(L2T_CASE, t, T)}; } \
  };
#define L2T_KERN_CPLX(t, T, R)                                                           \
  template <> struct kern<T> {                                                           \
    L2T_KERN_COMMON(t)                                                                   \
    L2T_KERN_SYM(t, geru, he, )                                                          \
    static constexpr auto gerc = &zar_blas_avx_x##t##gerc;                               \
    static std::vector<trsv_case<T>> cases() {                                           \
      return {ZAR_L2_TRSV_REAL_CASES(L2T_CASE, t, T) ZAR_L2_TRSV_CONJ_CASES(L2T_CASE, t, T)}; \
    }                                                                                    \
  };
ZAR_L2_REAL(L2T_KERN_REAL)
ZAR_L2_CPLX(L2T_KERN_CPLX)

using all_types = testing::Types<float, double, c32, c64>;
using real_types = testing::Types<float, double>;

// Calls f(uplo, trans, diag) for every triangular case of the type, the
// options as one-character strings.
template <class T, class F> void each_tri_case(F f) {
  const char* transes = zar::is_complex_v<T> ? "NTC" : "NT";
  for (const char* u : {"U", "L"})
    for (const char* t = transes; *t; ++t)
      for (const char* d : {"N", "U"}) {
        const char tr[] = {*t, 0};
        f(u, tr, d);
      }
}

}  // namespace l2t
