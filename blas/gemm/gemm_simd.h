// The packers of the GEMM engine, on the shared AVX vectors (kernel
// library only).
#pragma once
#include <immintrin.h>

#include <type_traits>

#include "blas/gemm/gemm_impl.h"
#include "zar/avx.h"

namespace zar::gemm {

template <class R> using simd = zar::avx<R>;

// ---- packing
// A block is cut into panels of W lines (W = mr rows of op(A), or nr columns
// of op(B)); panel q starts at dst + q * stride. Inside a panel the depth runs
// outermost: for p = 0 .. kp-1 the W values of the panel's lines at depth p
// are consecutive. The depth is padded with zeros up to kp (a multiple of
// kr) and the lines missing from a last, partial panel are zeros too.

// line_contig: the W lines of a panel are adjacent in memory (element (x, p)
// at src[x + p ld]); otherwise each line is contiguous along the depth
// (element (x, p) at src[p + x ld]).
// One 32-byte stretch of a source column (the W values of a panel at one
// depth when W elements fill 32 bytes), conjugated and scaled as the scalar
// path does: conj flips the sign of the imaginary parts; alpha x is
// (ar xr - ai xi, ar xi + ai xr), each product rounded, then one add.
template <class T, bool Conj, bool Scale> struct row32 {
  using R = real_t<T>;
  using S = simd<R>;
  typename S::V ar, ai;
  explicit row32(T alpha) {
    // Broadcasts from memory: AVX has no broadcast from a register.
    if constexpr (is_complex_v<T>) ar = S::bcast(&alpha.re), ai = S::bcast(&alpha.im);
    else ar = S::bcast(&alpha);
  }
  void operator()(const T* src, T* dst) const {
    auto x = S::load(reinterpret_cast<const R*>(src));
    if constexpr (Conj && is_complex_v<T>) x = S::flip_odd(x);
    if constexpr (Scale) {
      if constexpr (is_complex_v<T>) x = S::addsub(S::mul(x, ar), S::mul(S::swap_pairs(x), ai));
      else x = S::mul(x, ar);
    }
    S::store(reinterpret_cast<R*>(dst), x);
  }
};

// W lines that each run along the depth (element (x, p) at src[p + x ld])
// into one panel: 128-bit loads along each line and unpacks, for 8-byte
// elements (double, complex float) two depths at a time, for floats four;
// alpha (real types) scales as the scalar path does. Returns the depth done;
// other element types and widths do none.
template <class T, int W, bool Scale> inline int interleave_lines(const T* src, int ld, int depth, T* d, T alpha) {
  int p = 0;
  if constexpr (sizeof(T) == 8 && (W == 2 || W == 4)) {
    const double* s = reinterpret_cast<const double*>(src);
    double* o = reinterpret_cast<double*>(d);
    __m128d al{};
    if constexpr (Scale) al = _mm_loaddup_pd(reinterpret_cast<const double*>(&alpha));
    for (; p + 2 <= depth; p += 2)
      for (int x = 0; x < W; x += 2) {
        const __m128d r0 = _mm_loadu_pd(zar::offset(s, p + static_cast<long long>(x) * ld));
        const __m128d r1 = _mm_loadu_pd(zar::offset(s, p + static_cast<long long>(x + 1) * ld));
        __m128d lo = _mm_unpacklo_pd(r0, r1), hi = _mm_unpackhi_pd(r0, r1);
        if constexpr (Scale) lo = _mm_mul_pd(al, lo), hi = _mm_mul_pd(al, hi);
        _mm_storeu_pd(o + p * W + x, lo);
        _mm_storeu_pd(o + (p + 1) * W + x, hi);
      }
  } else if constexpr (std::is_same_v<T, float> && W == 4) {
    __m128 al{};
    if constexpr (Scale) al = _mm_load1_ps(&alpha);
    for (; p + 4 <= depth; p += 4) {
      __m128 r0 = _mm_loadu_ps(src + p), r1 = _mm_loadu_ps(src + p + ld);
      __m128 r2 = _mm_loadu_ps(src + p + 2L * ld), r3 = _mm_loadu_ps(src + p + 3L * ld);
      _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
      if constexpr (Scale) r0 = _mm_mul_ps(al, r0), r1 = _mm_mul_ps(al, r1), r2 = _mm_mul_ps(al, r2), r3 = _mm_mul_ps(al, r3);
      _mm_storeu_ps(d + p * 4, r0);
      _mm_storeu_ps(d + p * 4 + 4, r1);
      _mm_storeu_ps(d + p * 4 + 8, r2);
      _mm_storeu_ps(d + p * 4 + 12, r3);
    }
  }
  return p;
}

template <class T, int W, bool LineContig, bool Conj, bool Scale>
void pack(int len, int depth, const T* src, int ld, T* dst, int stride, T alpha) {
  const int kp = round_up(depth, cfg<T>::kr);
  auto value = [&](int x, int p) {
    T v = LineContig ? *zar::offset(src, x + static_cast<long long>(p) * ld) : *zar::offset(src, p + static_cast<long long>(x) * ld);
    if constexpr (Conj) v = conj(v);
    if constexpr (Scale) v = mul(alpha, v);
    return v;
  };
  const int full = len / W * W;  // lines in whole panels
  if constexpr (LineContig && W * sizeof(T) == 32) {
    // Whole panels in groups, so that each stretch of a source column is
    // read once and whole.
    constexpr int G = 4;
    const row32<T, Conj, Scale> row(alpha);
    for (int x0 = 0; x0 < full; x0 += G * W) {
      const int g = imin(G, (full - x0) / W);
      T* d = zar::offset(dst, static_cast<long long>(x0 / W) * stride);
      const T* s = src + x0;
      for (int p = 0; p < depth; ++p, s += ld)
        for (int q = 0; q < g; ++q) row(s + q * W, zar::offset(d, static_cast<long long>(q) * stride) + p * W);
    }
  } else {
    for (int x0 = 0; x0 < full; x0 += W) {
      T* d = zar::offset(dst, static_cast<long long>(x0 / W) * stride);
      int p = 0;
      if constexpr (!LineContig && !Conj && (!Scale || !is_complex_v<T>))
        p = interleave_lines<T, W, Scale>(zar::offset(src, static_cast<long long>(x0) * ld), ld, depth, d, alpha);
      for (; p < depth; ++p)
        for (int x = 0; x < W; ++x) d[p * W + x] = value(x0 + x, p);
    }
  }
  if (full < len) {  // the last, partial panel
    T* d = zar::offset(dst, static_cast<long long>(full / W) * stride);
    for (int p = 0; p < depth; ++p)
      for (int x = 0; x < W; ++x) d[p * W + x] = full + x < len ? value(full + x, p) : zero<T>();
  }
  for (int x0 = 0; x0 < len; x0 += W) {  // the padded depth
    T* d = zar::offset(dst, static_cast<long long>(x0 / W) * stride);
    for (int p = depth; p < kp; ++p)
      for (int x = 0; x < W; ++x) d[p * W + x] = zero<T>();
  }
}

template <class T, int W, bool LineContig, bool Conj>
void pack_entry(int len, int depth, const T* src, int ld, T* dst, int stride, const T* alpha) {
  if (alpha) pack<T, W, LineContig, Conj, true>(len, depth, src, ld, dst, stride, *alpha);
  else pack<T, W, LineContig, Conj, false>(len, depth, src, ld, dst, stride, T{});
}

// op(B) for depth rows, cols columns, packed unscaled (the work-area copy of
// the block kernel).
template <class T, tr M> void pack_b(int rows, int cols, const T* src, int ld, T* dst, int stride) {
  if constexpr (M == tr::n) pack<T, cfg<T>::nr, false, false, false>(cols, rows, src, ld, dst, stride, T{});
  else pack<T, cfg<T>::nr, true, M == tr::c, false>(cols, rows, src, ld, dst, stride, T{});
}

}  // namespace zar::gemm
