// AVX vectors of the real types with the few operations the Level-2 kernels
// need, so that one template serves float and double.
#pragma once
#include <immintrin.h>

namespace zar::l2 {

template <class R> struct vx;

template <> struct vx<double> {
  using V = __m256d;
  static constexpr int L = 4;
  static V load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, V v) { _mm256_storeu_pd(p, v); }
  static V set1(double a) { return _mm256_set1_pd(a); }
  static V zero() { return _mm256_setzero_pd(); }
  static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
  static V add(V a, V b) { return _mm256_add_pd(a, b); }
  static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
};

template <> struct vx<float> {
  using V = __m256;
  static constexpr int L = 8;
  static V load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, V v) { _mm256_storeu_ps(p, v); }
  static V set1(float a) { return _mm256_set1_ps(a); }
  static V zero() { return _mm256_setzero_ps(); }
  static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
  static V add(V a, V b) { return _mm256_add_ps(a, b); }
  static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
};

// Pairwise sum of n (a power of two) lanes: ((l0 + l1) + (l2 + l3)) + ...
template <class R> inline R lane_tree(const R* l, int n) {
  if (n == 1) return l[0];
  return lane_tree(l, n / 2) + lane_tree(l + n / 2, n / 2);
}
template <class R> inline R hsum(typename vx<R>::V v) {
  alignas(32) R l[vx<R>::L];
  vx<R>::store(l, v);
  return lane_tree(l, vx<R>::L);
}

}  // namespace zar::l2
