// Helpers of the tests of the symmetric, triangle-update, batched and 3M
// Level-3 kernels: random data with guard values, bit comparison, the
// kernels per element type, and the reference BLAS's routines.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "reference_blas.h"
#include "zar/level3.h"
#include "zar/types.h"

extern "C" {
// the kernels' engine, called directly for bit comparisons
void zar_blas_avx_xsgemm(ZAR_L3_GEMM_ARGS(float));
void zar_blas_avx_xdgemm(ZAR_L3_GEMM_ARGS(double));
void zar_blas_avx_xcgemm(ZAR_L3_GEMM_ARGS(zar::c32));
void zar_blas_avx_xzgemm(ZAR_L3_GEMM_ARGS(zar::c64));
// allocation fault injection of the core
int zar_fail_allocation(int nth);
}

namespace symt {

using zar::c32;
using zar::c64;
template <class T> using real = zar::real_t<T>;
template <class T> inline constexpr bool cplx = zar::is_complex_v<T>;

template <class T> T make(double re, double im = 0) {
  if constexpr (cplx<T>) return T{static_cast<real<T>>(re), static_cast<real<T>>(im)};
  else return static_cast<T>(re);
}
template <class T> T random_value(std::mt19937& g) {
  std::uniform_real_distribution<double> u(-1, 1);
  const double re = u(g);
  return make<T>(re, u(g));
}
template <class T> std::vector<T> random_matrix(size_t count, unsigned seed) {
  std::mt19937 g(seed);
  std::vector<T> v(count);
  for (auto& e : v) e = random_value<T>(g);
  return v;
}
// A NaN with a payload of its own, so that a copy of it is recognisable.
template <class T> T sentinel() {
  const real<T> q = std::numeric_limits<real<T>>::quiet_NaN();
  real<T> v;
  std::memcpy(&v, &q, sizeof v);
  reinterpret_cast<unsigned char*>(&v)[0] ^= 0x5a;
  return make<T>(v, v);
}
template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }
template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}
template <class T> double dist(T x, T y) {
  if constexpr (cplx<T>) return std::abs(x.re - y.re) + std::abs(x.im - y.im);
  else return std::abs(x - y);
}
template <class T> T conj(T x) {
  if constexpr (cplx<T>) return T{x.re, -x.im};
  else return x;
}
template <class T> double eps() { return std::numeric_limits<real<T>>::epsilon(); }
// Rounding bound of a depth-k sum of products of values in [-1, 1] (scaled
// by |alpha| ~ 1) plus beta C.
template <class T> double bound(int k) { return (cplx<T> ? 8.0 : 4.0) * (k + 4) * eps<T>(); }

// The kernels of one type; the complex types add the Hermitian ones.
template <class T> struct kern;
#define SYMT_KERN(t, T, R)                                                                   \
  static constexpr char letter = #t[0];                                                    \
  static constexpr auto gemm = &zar_blas_avx_x##t##gemm;                                   \
  static constexpr auto symm = &zar_blas_avx_x##t##symm;                                   \
  static constexpr auto syrk = &zar_blas_avx_x##t##syrk;                                   \
  static constexpr auto syrk_t = &zar_blas_avx_x##t##syrk_in_thread;                       \
  static constexpr auto syr2k = &zar_blas_avx_x##t##syr2k;                                 \
  static constexpr auto syr2k_t = &zar_blas_avx_x##t##syr2k_in_thread;                     \
  static constexpr auto gemmt = &zar_blas_avx_x##t##gemmt;                                 \
  static constexpr auto gemmt_t = &zar_blas_avx_x##t##gemmt_in_thread;                     \
  static constexpr auto batch = &zar_blas_avx_x##t##gemm_batch;                            \
  static constexpr auto strided = &zar_blas_avx_x##t##gemm_batch_strided;
#define SYMT_REAL(t, T, R) \
  template <> struct kern<T> { SYMT_KERN(t, T, R) };
#define SYMT_CPLX(t, T, R)                                                                   \
  template <> struct kern<T> {                                                             \
    SYMT_KERN(t, T, R)                                                                     \
    static constexpr auto hemm = &zar_blas_avx_x##t##hemm;                                 \
    static constexpr auto herk = &zar_blas_avx_x##t##herk;                                 \
    static constexpr auto herk_t = &zar_blas_avx_x##t##herk_in_thread;                     \
    static constexpr auto her2k = &zar_blas_avx_x##t##her2k;                               \
    static constexpr auto her2k_t = &zar_blas_avx_x##t##her2k_in_thread;                   \
    static constexpr auto gemm3m = &zar_blas_avx_x##t##gemm3m;                             \
  };
ZAR_L3_REAL(SYMT_REAL)
ZAR_L3_CPLX(SYMT_CPLX)
#undef SYMT_KERN
#undef SYMT_REAL
#undef SYMT_CPLX

// The reference BLAS's routine <letter><name>_ with the prototype F (null
// when the peer is not available, e.g. in a sanitizer build).
template <class T, class F> F reference(const char* name) {
  static const zar_test::ReferenceBlas ref;
  return ref.sym<F>((std::string(1, kern<T>::letter) + name + "_").c_str());
}
template <class T> using gemm_fn = void (*)(ZAR_L3_GEMM_ARGS(T));
template <class T> using symm_fn = void (*)(ZAR_L3_SYMM_ARGS(T));
template <class T, class S> using syrk_fn = void (*)(ZAR_L3_SYRK_ARGS(T, S));
template <class T, class S> using syr2k_fn = void (*)(ZAR_L3_SYR2K_ARGS(T, S));

#define SYMT_NEED_REFERENCE(f) \
  if (!(f)) GTEST_SKIP() << "the reference BLAS for i386 is not available (or a sanitizer build)"

using all_types = testing::Types<float, double, c32, c64>;
using complex_types = testing::Types<c32, c64>;

// Element (i, j) of a column-major matrix.
template <class T> T& el(std::vector<T>& x, int i, int j, int ld) { return x[i + static_cast<size_t>(j) * ld]; }
template <class T> const T& el(const std::vector<T>& x, int i, int j, int ld) {
  return x[i + static_cast<size_t>(j) * ld];
}

// A problem's result when the next allocation fails (the drivers' path
// without a work area) against its ordinary result, bit for bit.
template <class P> void expect_same_bits_without_work_area(const P& p) {
  auto whole = p.c, starved = p.c;
  p.run(whole);
  zar_fail_allocation(1);
  p.run(starved);
  zar_fail_allocation(0);
  EXPECT_TRUE(same_bits(starved, whole)) << p.label();
}

}  // namespace symt
