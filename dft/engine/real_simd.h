// Interleaved complex vectors of one AVX register for the real-data passes:
// two complex doubles or four complex floats per register. The passes are
// written once against this small set of operations and instantiated per
// precision.
#pragma once
#include <immintrin.h>

namespace zar::fft::simd {

template <class T> struct cvec;

template <> struct cvec<double> {
  using reg = __m256d;
  static constexpr int width = 2;  // complex values per register
  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static reg set1(double a) { return _mm256_set1_pd(a); }
  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg sub(reg a, reg b) { return _mm256_sub_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
  static reg conj(reg a) { return _mm256_xor_pd(a, _mm256_set_pd(-0.0, 0.0, -0.0, 0.0)); }
  // Complex values in the opposite order.
  static reg reverse(reg a) { return _mm256_permute2f128_pd(a, a, 1); }
  // t * a for complex t and a, element by element.
  static reg cmul(reg t, reg a) {
    reg re = _mm256_movedup_pd(t), im = _mm256_permute_pd(t, 0xF);
    return _mm256_addsub_pd(_mm256_mul_pd(a, re), _mm256_mul_pd(_mm256_permute_pd(a, 0x5), im));
  }
};

template <> struct cvec<float> {
  using reg = __m256;
  static constexpr int width = 4;
  static reg load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, reg v) { _mm256_storeu_ps(p, v); }
  static reg set1(float a) { return _mm256_set1_ps(a); }
  static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
  static reg sub(reg a, reg b) { return _mm256_sub_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
  static reg conj(reg a) { return _mm256_xor_ps(a, _mm256_set_ps(-0.f, 0.f, -0.f, 0.f, -0.f, 0.f, -0.f, 0.f)); }
  static reg reverse(reg a) { return _mm256_permute_ps(_mm256_permute2f128_ps(a, a, 1), 0x4E); }
  static reg cmul(reg t, reg a) {
    reg re = _mm256_moveldup_ps(t), im = _mm256_movehdup_ps(t);
    return _mm256_addsub_ps(_mm256_mul_ps(a, re), _mm256_mul_ps(_mm256_permute_ps(a, 0xB1), im));
  }
};

}  // namespace zar::fft::simd
