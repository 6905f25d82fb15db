// Vectors of complex numbers for the FFT butterflies (AVX, no FMA).
//
// A vector type holds L interleaved complex values of one precision:
//   d2: 2 doubles complex (ymm)    d1: 1 double complex (xmm)
//   f4: 4 floats complex (ymm)     f2: 2 floats complex (xmm)
//   f1: 1 float complex (low half of an xmm)
// Each offers the same small set of operations, so the butterflies and the
// pass loops are written once for all of them.
#pragma once
#include <immintrin.h>

namespace zar::fft::simd {

struct d2 {
  using T = double;
  using R = __m256d;
  static constexpr int L = 2;
  static R load(const T* p) { return _mm256_loadu_pd(p); }
  static void store(T* p, R v) { _mm256_storeu_pd(p, v); }
  static R add(R a, R b) { return _mm256_add_pd(a, b); }
  static R sub(R a, R b) { return _mm256_sub_pd(a, b); }
  static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
  static R addsub(R a, R b) { return _mm256_addsub_pd(a, b); }
  static R bxor(R a, R b) { return _mm256_xor_pd(a, b); }
  static R zero() { return _mm256_setzero_pd(); }
  static R set1(T c) { return _mm256_set1_pd(c); }
  static R bcast(const T* p) { return _mm256_broadcast_sd(p); }
  static R swap(R a) { return _mm256_permute_pd(a, 0x5); }
  static R dup_re(R w) { return _mm256_movedup_pd(w); }
  static R dup_im(R w) { return _mm256_permute_pd(w, 0xF); }
  static R sign_re() { return _mm256_setr_pd(-0.0, 0.0, -0.0, 0.0); }
  static R sign_im() { return _mm256_setr_pd(0.0, -0.0, 0.0, -0.0); }
  // lane i to p + i * step (step in reals)
  static void scatter(T* p, long step, R v) {
    _mm_storeu_pd(p, _mm256_castpd256_pd128(v));
    _mm_storeu_pd(p + step, _mm256_extractf128_pd(v, 1));
  }
  // lane i of b_j to p[4i + j] (complex elements): four outputs of L
  // butterflies stored as whole rows
  static void store4_rows(T* p, R b0, R b1, R b2, R b3) {
    _mm256_storeu_pd(p, _mm256_permute2f128_pd(b0, b1, 0x20));
    _mm256_storeu_pd(p + 4, _mm256_permute2f128_pd(b2, b3, 0x20));
    _mm256_storeu_pd(p + 8, _mm256_permute2f128_pd(b0, b1, 0x31));
    _mm256_storeu_pd(p + 12, _mm256_permute2f128_pd(b2, b3, 0x31));
  }
};

struct d1 {
  using T = double;
  using R = __m128d;
  static constexpr int L = 1;
  static R load(const T* p) { return _mm_loadu_pd(p); }
  static void store(T* p, R v) { _mm_storeu_pd(p, v); }
  static R add(R a, R b) { return _mm_add_pd(a, b); }
  static R sub(R a, R b) { return _mm_sub_pd(a, b); }
  static R mul(R a, R b) { return _mm_mul_pd(a, b); }
  static R addsub(R a, R b) { return _mm_addsub_pd(a, b); }
  static R bxor(R a, R b) { return _mm_xor_pd(a, b); }
  static R zero() { return _mm_setzero_pd(); }
  static R set1(T c) { return _mm_set1_pd(c); }
  static R bcast(const T* p) { return _mm_loaddup_pd(p); }
  static R swap(R a) { return _mm_shuffle_pd(a, a, 1); }
  static R dup_re(R w) { return _mm_movedup_pd(w); }
  static R dup_im(R w) { return _mm_unpackhi_pd(w, w); }
  static R sign_re() { return _mm_setr_pd(-0.0, 0.0); }
  static R sign_im() { return _mm_setr_pd(0.0, -0.0); }
  static void scatter(T* p, long, R v) { store(p, v); }
};

struct f4 {
  using T = float;
  using R = __m256;
  static constexpr int L = 4;
  static R load(const T* p) { return _mm256_loadu_ps(p); }
  static void store(T* p, R v) { _mm256_storeu_ps(p, v); }
  static R add(R a, R b) { return _mm256_add_ps(a, b); }
  static R sub(R a, R b) { return _mm256_sub_ps(a, b); }
  static R mul(R a, R b) { return _mm256_mul_ps(a, b); }
  static R addsub(R a, R b) { return _mm256_addsub_ps(a, b); }
  static R bxor(R a, R b) { return _mm256_xor_ps(a, b); }
  static R zero() { return _mm256_setzero_ps(); }
  static R set1(T c) { return _mm256_set1_ps(c); }
  static R bcast(const T* p) { return _mm256_broadcast_ss(p); }
  static R swap(R a) { return _mm256_permute_ps(a, 0xB1); }
  static R dup_re(R w) { return _mm256_moveldup_ps(w); }
  static R dup_im(R w) { return _mm256_movehdup_ps(w); }
  static R sign_re() { return _mm256_setr_ps(-0.f, 0.f, -0.f, 0.f, -0.f, 0.f, -0.f, 0.f); }
  static R sign_im() { return _mm256_setr_ps(0.f, -0.f, 0.f, -0.f, 0.f, -0.f, 0.f, -0.f); }
  static void scatter(T* p, long step, R v) {
    const __m128 lo = _mm256_castps256_ps128(v), hi = _mm256_extractf128_ps(v, 1);
    _mm_storel_pi(reinterpret_cast<__m64*>(p), lo);
    _mm_storeh_pi(reinterpret_cast<__m64*>(p + step), lo);
    _mm_storel_pi(reinterpret_cast<__m64*>(p + 2 * step), hi);
    _mm_storeh_pi(reinterpret_cast<__m64*>(p + 3 * step), hi);
  }
  // lane i of b_j to p[4i + j] (complex elements), a 4 x 4 transposition of
  // 64-bit complex values
  static void store4_rows(T* p, R b0, R b1, R b2, R b3) {
    const __m256d e0 = _mm256_castps_pd(b0), e1 = _mm256_castps_pd(b1);
    const __m256d e2 = _mm256_castps_pd(b2), e3 = _mm256_castps_pd(b3);
    const __m256d t0 = _mm256_unpacklo_pd(e0, e1), t1 = _mm256_unpackhi_pd(e0, e1);
    const __m256d t2 = _mm256_unpacklo_pd(e2, e3), t3 = _mm256_unpackhi_pd(e2, e3);
    _mm256_storeu_ps(p, _mm256_castpd_ps(_mm256_permute2f128_pd(t0, t2, 0x20)));
    _mm256_storeu_ps(p + 8, _mm256_castpd_ps(_mm256_permute2f128_pd(t1, t3, 0x20)));
    _mm256_storeu_ps(p + 16, _mm256_castpd_ps(_mm256_permute2f128_pd(t0, t2, 0x31)));
    _mm256_storeu_ps(p + 24, _mm256_castpd_ps(_mm256_permute2f128_pd(t1, t3, 0x31)));
  }
};

struct f2base {
  using T = float;
  using R = __m128;
  static R add(R a, R b) { return _mm_add_ps(a, b); }
  static R sub(R a, R b) { return _mm_sub_ps(a, b); }
  static R mul(R a, R b) { return _mm_mul_ps(a, b); }
  static R addsub(R a, R b) { return _mm_addsub_ps(a, b); }
  static R bxor(R a, R b) { return _mm_xor_ps(a, b); }
  static R zero() { return _mm_setzero_ps(); }
  static R set1(T c) { return _mm_set1_ps(c); }
  static R bcast(const T* p) { return _mm_broadcast_ss(p); }
  static R swap(R a) { return _mm_permute_ps(a, 0xB1); }
  static R dup_re(R w) { return _mm_moveldup_ps(w); }
  static R dup_im(R w) { return _mm_movehdup_ps(w); }
  static R sign_re() { return _mm_setr_ps(-0.f, 0.f, -0.f, 0.f); }
  static R sign_im() { return _mm_setr_ps(0.f, -0.f, 0.f, -0.f); }
};

struct f2 : f2base {
  static constexpr int L = 2;
  static R load(const T* p) { return _mm_loadu_ps(p); }
  static void store(T* p, R v) { _mm_storeu_ps(p, v); }
  static void scatter(T* p, long step, R v) {
    _mm_storel_pi(reinterpret_cast<__m64*>(p), v);
    _mm_storeh_pi(reinterpret_cast<__m64*>(p + step), v);
  }
  static void store4_rows(T* p, R b0, R b1, R b2, R b3) {
    const __m128d e0 = _mm_castps_pd(b0), e1 = _mm_castps_pd(b1), e2 = _mm_castps_pd(b2), e3 = _mm_castps_pd(b3);
    _mm_storeu_ps(p, _mm_castpd_ps(_mm_unpacklo_pd(e0, e1)));
    _mm_storeu_ps(p + 4, _mm_castpd_ps(_mm_unpacklo_pd(e2, e3)));
    _mm_storeu_ps(p + 8, _mm_castpd_ps(_mm_unpackhi_pd(e0, e1)));
    _mm_storeu_ps(p + 12, _mm_castpd_ps(_mm_unpackhi_pd(e2, e3)));
  }
};

struct f1 : f2base {
  static constexpr int L = 1;
  static R load(const T* p) { return _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p)); }
  static void store(T* p, R v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), v); }
  static void scatter(T* p, long, R v) { store(p, v); }
};

// The vector types of a precision, widest first.
template <class T> struct family;
template <> struct family<double> {
  using full = d2;
  using half = d1;
  using one = d1;
};
template <> struct family<float> {
  using full = f4;
  using half = f2;
  using one = f1;
};

// Complex arithmetic on vectors. Sign is the sign of the transform's
// exponent: twiddles are stored for the forward transform (e^{-i...}) and
// conjugated on the fly for the backward one.
template <class V, int Sign> struct cops {
  using R = typename V::R;
  using T = typename V::T;
  // v * (Sign * i)
  static R mul_i(R v) { return V::bxor(V::swap(v), Sign > 0 ? V::sign_re() : V::sign_im()); }
  // a * w (forward) or a * conj(w) (backward), w given as (re, re) and (im, im)
  static R twiddle(R a, R wr, R wi) {
    const R t1 = V::mul(a, wr), t2 = V::mul(V::swap(a), wi);
    if constexpr (Sign < 0)
      return V::addsub(t1, t2);
    else
      return V::add(t1, V::bxor(t2, V::sign_im()));
  }
  // the same twiddle for every lane, from an interleaved (re, im) pair
  static R twiddle_b(R a, const T* w) { return twiddle(a, V::bcast(w), V::bcast(w + 1)); }
  // one twiddle per lane, from L interleaved pairs
  static R twiddle_l(R a, const T* w) {
    const R ww = V::load(w);
    return twiddle(a, V::dup_re(ww), V::dup_im(ww));
  }
};

}  // namespace zar::fft::simd
