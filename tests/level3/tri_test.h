// Helpers of the triangular Level-3 tests: the kernels and their reference
// BLAS twins per element type, triangles that are well conditioned for a
// solve (the unreferenced part full of NaN), matrices with guard values
// around them, and the error measure.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "reference_blas.h"
#include "zar/level3.h"
#include "zar/types.h"

namespace tri_test {

using zar::c32;
using zar::c64;
using all_types = testing::Types<float, double, c32, c64>;

template <class T> using tri_fn = void (*)(ZAR_L3_TRSM_ARGS(T));
// The reference's Fortran routines, with the hidden lengths of the options.
template <class T>
using ref_fn = void (*)(ZAR_L3_TRSM_ARGS(T), size_t, size_t, size_t, size_t);

template <class T> struct api;
#define TRI_TEST_API(t, T, Rl)                                                  \
  template <> struct api<T> {                                                   \
    static constexpr tri_fn<T> trsm = &zar_blas_avx_x##t##trsm;                 \
    static constexpr tri_fn<T> trmm = &zar_blas_avx_x##t##trmm;                 \
    static constexpr const char* ref_trsm = #t "trsm_";                         \
    static constexpr const char* ref_trmm = #t "trmm_";                         \
  };
ZAR_L3_ALL(TRI_TEST_API)
#undef TRI_TEST_API

template <class T> using real_of = zar::real_t<T>;
template <class T> T make(double re, double im = 0) {
  if constexpr (zar::is_complex_v<T>) return T{static_cast<real_of<T>>(re), static_cast<real_of<T>>(im)};
  else return static_cast<T>(re);
}
template <class T> double mag(T v) {
  if constexpr (zar::is_complex_v<T>) return std::hypot(double(v.re), double(v.im));
  else return std::fabs(double(v));
}
template <class T> T diff(T a, T b) {
  if constexpr (zar::is_complex_v<T>) return T{a.re - b.re, a.im - b.im};
  else return a - b;
}
template <class T> double eps() { return std::numeric_limits<real_of<T>>::epsilon(); }
template <class T> T nan_value() { return make<T>(NAN, NAN); }

template <class T> T rnd(std::mt19937& g, double lo, double hi) {
  std::uniform_real_distribution<double> u(lo, hi);
  const double re = u(g);
  return make<T>(re, u(g));
}

// A column-major rows x cols matrix inside a larger array: leading
// dimension rows + 3 and a guard value in every element outside it.
template <class T> struct guarded {
  int rows, cols, ld;
  std::vector<T> v;
  static T guard() { return make<T>(-777.25, 333.5); }
  guarded(int r, int c) : rows(r), cols(c), ld(r + 3), v(static_cast<size_t>(ld) * (c > 0 ? c : 1) + 2, guard()) {}
  T* data() { return v.data() + 1; }
  T& operator()(int i, int j) { return data()[i + static_cast<size_t>(j) * ld]; }
  void fill(unsigned seed) {
    std::mt19937 g(seed);
    for (int j = 0; j < cols; ++j)
      for (int i = 0; i < rows; ++i) (*this)(i, j) = rnd<T>(g, -1, 1);
  }
  // every element outside the matrix still holds the guard value
  bool guards_intact() const {
    const T gv = guard();
    for (size_t e = 0; e < v.size(); ++e) {
      const long off = static_cast<long>(e) - 1;
      const bool inside = off >= 0 && off % ld < rows && off / ld < cols;
      if (!inside && std::memcmp(&v[e], &gv, sizeof(T)) != 0) return false;
    }
    return true;
  }
};

// A k x k triangle for the options: off-diagonal magnitudes below 1/k,
// diagonal magnitudes in [1, 2] (diagonally dominant: the solve is well
// conditioned); the other triangle, and a unit diagonal, hold NaN so that
// reading them shows.
template <class T> guarded<T> triangle(int k, char uplo, char diag, unsigned seed) {
  guarded<T> a(k, k);
  std::mt19937 g(seed);
  const double off = 1.0 / (k + 1);
  for (int j = 0; j < k; ++j)
    for (int i = 0; i < k; ++i) {
      const bool in = uplo == 'U' ? i < j : i > j;
      if (i == j) a(i, j) = diag == 'U' ? nan_value<T>() : rnd<T>(g, 1, 1.4);
      else a(i, j) = in ? rnd<T>(g, -off, off) : nan_value<T>();
    }
  return a;
}

// Largest |got - want| over the matrix, relative to max(1, largest |want|);
// NaN counts as infinite.
template <class T> double rel_error(guarded<T>& got, guarded<T>& want) {
  double e = 0, scale = 1;
  for (int j = 0; j < got.cols; ++j)
    for (int i = 0; i < got.rows; ++i) {
      const double d = mag(diff(got(i, j), want(i, j)));
      e = std::isnan(d) ? INFINITY : std::max(e, d);
      scale = std::max(scale, mag(want(i, j)));
    }
  return e / scale;
}

template <class T> bool same_bits(const guarded<T>& a, const guarded<T>& b) {
  return a.v.size() == b.v.size() && std::memcmp(a.v.data(), b.v.data(), a.v.size() * sizeof(T)) == 0;
}

// Calls f(side, uplo, trans, diag) for every case, the options as
// characters ('C' for the real types too: it reads as 'T').
template <class F> void each_case(F f) {
  for (char s : {'L', 'R'})
    for (char u : {'U', 'L'})
      for (char t : {'N', 'T', 'C'})
        for (char d : {'N', 'U'}) f(s, u, t, d);
}

}  // namespace tri_test
