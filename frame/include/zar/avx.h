// AVX vectors of the real types, shared by the kernel families: loads and
// stores (unaligned forms: as fast as the aligned ones on aligned data),
// arithmetic, the complex-pair helpers and the horizontal sums whose order
// is fixed. Kernel library only.
#pragma once
#include <immintrin.h>

#include "zar/types.h"

namespace zar {

template <class R>
struct avx;

template <>
struct avx<double> {
  using V = __m256d;
  static constexpr int L = 4;
  static V load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, V v) { _mm256_storeu_pd(p, v); }
  static V set1(double a) { return _mm256_set1_pd(a); }
  static V zero() { return _mm256_setzero_pd(); }
  static V add(V a, V b) { return _mm256_add_pd(a, b); }
  static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
  static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
  static V abs(V a) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), a); }
  static V neg(V a) { return _mm256_xor_pd(_mm256_set1_pd(-0.0), a); }
  // max/min(a, b) give b when either is NaN
  static V max(V a, V b) { return _mm256_max_pd(a, b); }
  static V min(V a, V b) { return _mm256_min_pd(a, b); }
  // lanes equal (quiet: NaN raises nothing), one bit per lane
  static int eq_mask(V a, V b) { return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_EQ_OQ)); }
  // (re, im) pairs: swap the two parts of every pair.
  static V swap_pairs(V a) { return _mm256_permute_pd(a, 0x5); }
  // lanes (a0 - b0, a1 + b1, ...)
  static V addsub(V a, V b) { return _mm256_addsub_pd(a, b); }
  // sum of each (re, im) pair of a and b; the element order within the result
  // is not preserved (used only by the searches)
  static V pair_sums(V a, V b) { return _mm256_hadd_pd(a, b); }
  // Horizontal sum in the fixed order (v0 + v2) + (v1 + v3).
  static double hsum(V v) {
    const __m128d w = _mm_add_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
    return _mm_cvtsd_f64(_mm_add_sd(w, _mm_unpackhi_pd(w, w)));
  }
  // Lanes as (re, im) pairs c0, c1: c0 + c1.
  static cx<double> hsum_pairs(V v) {
    const __m128d w = _mm_add_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
    return {_mm_cvtsd_f64(w), _mm_cvtsd_f64(_mm_unpackhi_pd(w, w))};
  }
  // (re, re, ...) and (im, im, ...) of (re, im) pairs
  static V dup_re(V a) { return _mm256_movedup_pd(a); }
  static V dup_im(V a) { return _mm256_permute_pd(a, 0xF); }
  // Broadcast one element from memory.
  static V bcast(const double* p) { return _mm256_broadcast_sd(p); }
  // Lanes below `count` on, the others off, for the masked moves.
  static __m256i mask(int count) {
    return _mm256_setr_epi64x(count > 0 ? -1 : 0, count > 1 ? -1 : 0, count > 2 ? -1 : 0, count > 3 ? -1 : 0);
  }
  static V maskload(const double* p, __m256i m) { return _mm256_maskload_pd(p, m); }
  static void maskstore(double* p, __m256i m, V v) { _mm256_maskstore_pd(p, m, v); }
  // Sign of the odd lanes (imaginary parts) flipped.
  static V flip_odd(V v) { return _mm256_xor_pd(v, _mm256_setr_pd(0.0, -0.0, 0.0, -0.0)); }
};

template <>
struct avx<float> {
  using V = __m256;
  static constexpr int L = 8;
  static V load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, V v) { _mm256_storeu_ps(p, v); }
  static V set1(float a) { return _mm256_set1_ps(a); }
  static V zero() { return _mm256_setzero_ps(); }
  static V add(V a, V b) { return _mm256_add_ps(a, b); }
  static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
  static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
  static V abs(V a) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a); }
  static V neg(V a) { return _mm256_xor_ps(_mm256_set1_ps(-0.0f), a); }
  static V max(V a, V b) { return _mm256_max_ps(a, b); }
  static V min(V a, V b) { return _mm256_min_ps(a, b); }
  static int eq_mask(V a, V b) { return _mm256_movemask_ps(_mm256_cmp_ps(a, b, _CMP_EQ_OQ)); }
  static V swap_pairs(V a) { return _mm256_permute_ps(a, 0xB1); }
  static V addsub(V a, V b) { return _mm256_addsub_ps(a, b); }
  static V pair_sums(V a, V b) { return _mm256_hadd_ps(a, b); }
  // Horizontal sum in the fixed order ((v0 + v4) + (v2 + v6)) + ((v1 + v5) + (v3 + v7)).
  static float hsum(V v) {
    const __m128 w = _mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1));
    const __m128 u = _mm_add_ps(w, _mm_movehl_ps(w, w));
    return _mm_cvtss_f32(_mm_add_ss(u, _mm_shuffle_ps(u, u, 0x55)));
  }
  // Lanes as (re, im) pairs c0..c3: (c0 + c2) + (c1 + c3).
  static cx<float> hsum_pairs(V v) {
    const __m128 w = _mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1));
    const __m128 u = _mm_add_ps(w, _mm_movehl_ps(w, w));
    return {_mm_cvtss_f32(u), _mm_cvtss_f32(_mm_shuffle_ps(u, u, 0x55))};
  }
  static V dup_re(V a) { return _mm256_moveldup_ps(a); }
  static V dup_im(V a) { return _mm256_movehdup_ps(a); }
  static V bcast(const float* p) { return _mm256_broadcast_ss(p); }
  static __m256i mask(int count) {
    return _mm256_setr_epi32(count > 0 ? -1 : 0, count > 1 ? -1 : 0, count > 2 ? -1 : 0, count > 3 ? -1 : 0,
                             count > 4 ? -1 : 0, count > 5 ? -1 : 0, count > 6 ? -1 : 0, count > 7 ? -1 : 0);
  }
  static V maskload(const float* p, __m256i m) { return _mm256_maskload_ps(p, m); }
  static void maskstore(float* p, __m256i m, V v) { _mm256_maskstore_ps(p, m, v); }
  static V flip_odd(V v) {
    return _mm256_xor_ps(v, _mm256_setr_ps(0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f));
  }
};

}  // namespace zar
