// Helpers of the GEMM suites: the per-type entry points, random matrices,
// and a plain reference that forms every sum in the engine's order.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "zar/gemm.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace gemm_test {

using zar::c32;
using zar::c64;
using zar::gemm::desc;

// Entry points of one type, named uniformly.
template <class T> struct api;
#define GEMM_TEST_API(t, T)                                                                                 \
  template <> struct api<T> {                                                                               \
    static constexpr char letter = #t[0];                                                                   \
    static constexpr auto xgemm = &zar_blas_avx_x##t##gemm;                                                 \
    static constexpr auto par = &zar_blas_avx_x##t##gemm_par;                                               \
    static constexpr auto pst = &zar_blas_avx_##t##gemm_pst;                                                \
    static constexpr auto zero_desc = &zar_blas_avx_##t##gemm_zero_desc;                                    \
    static constexpr auto optimal = &zar_blas_avx_##t##gemm_get_optimal_kernel;                             \
    static constexpr auto get_kernel = &zar_blas_avx_##t##gemm_get_kernel;                                  \
    static constexpr auto get_blks = &zar_blas_avx_##t##gemm_get_blks_size;                                 \
    static constexpr auto set_blks = &zar_blas_avx_##t##gemm_set_blks_size;                                 \
    static constexpr auto bufs_size = &zar_blas_avx_##t##gemm_get_bufs_size;                                \
    static constexpr auto get_bufs = &zar_blas_avx_##t##gemm_get_bufs;                                      \
    static constexpr auto free_bufs = &zar_blas_avx_##t##gemm_free_bufs;                                    \
    static constexpr auto mscale = &zar_blas_avx_##t##gemm_mscale;                                          \
    static constexpr auto ker0 = &zar_blas_avx_##t##gemm_ker0;                                              \
    static const zar::gemm::ker_info<T>* table() { return zar_avx_##t##_all_gemm_ker; }                     \
    static int optimal_index() { return zar_avx_##t##_opt_gemm_ker; }                                       \
    static void fortran(const char* ta, const char* tb, const int* m, const int* n, const int* k,           \
                        const T* al, const T* a, const int* lda, const T* b, const int* ldb, const T* be,   \
                        T* c, const int* ldc) {                                                             \
      t##gemm_(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc);                                            \
    }                                                                                                       \
  };
ZAR_GEMM_TYPES(GEMM_TEST_API)
#undef GEMM_TEST_API

template <class T> struct real_of { using type = T; };
template <class R> struct real_of<zar::cx<R>> { using type = R; };
template <class T> constexpr bool is_cx = !std::is_same_v<typename real_of<T>::type, T>;

template <class T> T make(double re, double im) {
  if constexpr (is_cx<T>) return T{static_cast<typename real_of<T>::type>(re), static_cast<typename real_of<T>::type>(im)};
  else return static_cast<T>(re);
}

// Random values in (-1, 1): rounding makes every order of operations visible.
template <class T> std::vector<T> random_matrix(size_t count, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<T> v(count);
  for (auto& x : v) {
    const double re = u(g), im = u(g);
    x = make<T>(re, im);
  }
  return v;
}

template <class T> bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
  return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}
// First element whose bits differ, or -1.
template <class T> long first_difference(const std::vector<T>& x, const std::vector<T>& y) {
  for (size_t i = 0; i < x.size(); ++i)
    if (std::memcmp(&x[i], &y[i], sizeof(T)) != 0) return static_cast<long>(i);
  return -1;
}

// ---- the reference, written independently of the engine
template <class T> T cmul(T a, T b) {
  if constexpr (is_cx<T>) return T{a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
  else return a * b;
}
template <class T> bool exactly(T x, double re, double im = 0) {
  if constexpr (is_cx<T>) return x.re == re && x.im == im;
  else return x == re;
}

template <class T> T op(char t, const T* x, int ld, int r, int c) {
  // op(X)(r, c): X(r, c) for "N", X(c, r) for "T", its conjugate for "C".
  T v = (t == 'N') ? x[r + static_cast<long>(c) * ld] : x[c + static_cast<long>(r) * ld];
  if constexpr (is_cx<T>)
    if (t == 'C') v.im = -v.im;
  return v;
}

// C := beta C once (0 stores zeros), then for every depth block of kb the
// block's sum, formed from zero in depth order from alpha op(A) rounded
// first, is added into C. store_first: the first block's sum is stored, not
// added (the beta-zero kernel of the blocked body).
template <class T>
void reference(char ta, char tb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
               T* c, int ldc, int kb, bool store_first = false) {
  using R = typename real_of<T>::type;
  if (m < 1 || n < 1) return;
  if (!exactly(beta, 1)) {
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i) {
        T& x = c[i + static_cast<long>(j) * ldc];
        x = exactly(beta, 0) ? T{} : cmul(beta, x);
      }
  }
  if (exactly(alpha, 0)) return;
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i) {
      T& x = c[i + static_cast<long>(j) * ldc];
      for (int p0 = 0; p0 < k; p0 += kb) {
        const int p1 = std::min(k, p0 + kb);
        T v;
        if constexpr (is_cx<T>) {
          R rr = 0, ii = 0, ri = 0, ir = 0;
          for (int p = p0; p < p1; ++p) {
            const T av = cmul(alpha, op(ta, a, lda, i, p));
            const T bv = op(tb, b, ldb, p, j);
            rr = rr + av.re * bv.re;
            ii = ii + av.im * bv.im;
            ri = ri + av.re * bv.im;
            ir = ir + av.im * bv.re;
          }
          v = T{rr - ii, ir + ri};
          if (store_first && p0 == 0) x = v;
          else x = T{x.re + v.re, x.im + v.im};
        } else {
          R s = 0;
          for (int p = p0; p < p1; ++p) s = s + alpha * op(ta, a, lda, i, p) * op(tb, b, ldb, p, j);
          v = s;
          x = (store_first && p0 == 0) ? v : x + v;
        }
      }
    }
}

// The depth block the driver chooses for k.
inline int kb_for(int k) {
  if (k < 256) return std::max((k + 3) / 4 * 4, 128);
  if (k > 256 && k < 512) return (k / 2 + 3) / 4 * 4;
  return 256;
}

using all_types = ::testing::Types<float, double, c32, c64>;

}  // namespace gemm_test
