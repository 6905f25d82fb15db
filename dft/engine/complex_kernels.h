// Butterflies and passes of the mixed-radix engine.
//
// A transform of length n runs as a chain of Stockham passes (self-sorting,
// decimation in frequency). A pass of radix r sees s interleaved
// sub-problems of length r*m each: element k of butterfly (p, q) is
// src[q + s*(p + k*m)], its outputs b_j = sum_k a_k w_r^{jk} are multiplied by
// the twiddle w_{rm}^{jp} and stored at dst[q + s*(r*p + j)]; the next pass
// has m/r... and s*r. After the last pass (m = 1) the output is in natural
// order. The first pass of a single transform has s = 1; there the lanes of
// a vector hold consecutive p (twiddles per lane, outputs scattered), in all
// other passes they hold consecutive q (one twiddle for all lanes).
//
// A batch of B transforms interleaved element by element (x[j*B + b]) is the
// same chain started with s = B, which is how small transforms are batched.
#pragma once
#include "dft/engine/complex_simd.h"

// The legs of a butterfly are loops over a compile-time count, unrolled so
// that the legs stay in registers.
#define ZAR_UNROLL _Pragma("GCC unroll 16")

// The generic odd radix keeps its legs in arrays sized for the largest
// radix; only the first r are used, which the compiler cannot see.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

namespace zar::fft::detail {

// One pass. tw: twiddles w_{rm}^{jp} for j = 1..r-1, p = 0..m-1 at
// tw[2*((j-1)*m + p)] (forward sign). rc: cos and sin of 2 pi k / r,
// k = 0..r-1, interleaved (odd radices only).
template <class T> struct pass {
  int r;
  long m;
  const T* tw;
  const T* rc;
};

// Largest radix done by the generic odd butterfly; larger prime factors go
// through the chirp-z route.
constexpr int max_generic_radix = 64;

// ---------------------------------------------------------------- butterflies
// In place on a[0..r): a_j := sum_k a_k e^{Sign 2 pi i jk/r}.
template <class V, int Sign> struct bfly {
  using R = typename V::R;
  using T = typename V::T;
  using C = simd::cops<V, Sign>;

  static void r2(R* a) {
    const R t = a[1];
    a[1] = V::sub(a[0], t);
    a[0] = V::add(a[0], t);
  }
  static void r4(R* a) {
    const R t0 = V::add(a[0], a[2]), t1 = V::sub(a[0], a[2]);
    const R t2 = V::add(a[1], a[3]), t3 = C::mul_i(V::sub(a[1], a[3]));
    a[0] = V::add(t0, t2);
    a[2] = V::sub(t0, t2);
    a[1] = V::add(t1, t3);
    a[3] = V::sub(t1, t3);
  }
  // 8 = 2 x 4: halves combined first, the odd half turned by w_8^k, then
  // two radix-4 butterflies give the even and odd outputs.
  static void r8(R* a) {
    const R h = V::set1(T(0.70710678118654752440084436210484904L));
    R e[4], o[4];
    ZAR_UNROLL
    for (int k = 0; k < 4; ++k) {
      e[k] = V::add(a[k], a[k + 4]);
      o[k] = V::sub(a[k], a[k + 4]);
    }
    const R o1i = C::mul_i(o[1]), o3i = C::mul_i(o[3]);
    o[1] = V::mul(V::add(o[1], o1i), h);
    o[2] = C::mul_i(o[2]);
    o[3] = V::mul(V::sub(o3i, o[3]), h);
    r4(e);
    r4(o);
    ZAR_UNROLL
    for (int j = 0; j < 4; ++j) {
      a[2 * j] = e[j];
      a[2 * j + 1] = o[j];
    }
  }
  // Odd r (R = r known at compile time, or R = 0 for any odd r up to
  // max_generic_radix): sums and differences of the pairs (k, r-k), then
  // each output pair (j, r-j) from real cosine and sine weights.
  template <int R_>
  static void odd(R* a, int r, const T* rc) {
    constexpr int cap = R_ ? (R_ - 1) / 2 : (max_generic_radix - 1) / 2;
    if constexpr (R_ != 0) r = R_;
    const int h = (r - 1) / 2;
    R s[cap], d[cap];
    R b0 = a[0];
    ZAR_UNROLL
    for (int k = 0; k < h; ++k) {
      s[k] = V::add(a[k + 1], a[r - 1 - k]);
      d[k] = V::sub(a[k + 1], a[r - 1 - k]);
      b0 = V::add(b0, s[k]);
    }
    const R a0 = a[0];
    ZAR_UNROLL
    for (int j = 1; j <= h; ++j) {
      R re = a0, im = V::zero();
      int idx = 0;
      ZAR_UNROLL
      for (int k = 0; k < h; ++k) {
        idx += j;
        if (idx >= r) idx -= r;
        re = V::add(re, V::mul(s[k], V::bcast(rc + 2 * idx)));
        im = V::add(im, V::mul(d[k], V::bcast(rc + 2 * idx + 1)));
      }
      const R t = C::mul_i(im);
      a[j] = V::add(re, t);
      a[r - j] = V::sub(re, t);
    }
    a[0] = b0;
  }

  template <int R_>
  static void run(R* a, int r, const T* rc) {
    if constexpr (R_ == 2)
      r2(a);
    else if constexpr (R_ == 4)
      r4(a);
    else if constexpr (R_ == 8)
      r8(a);
    else
      odd<R_>(a, r, rc);
  }
};

// ---------------------------------------------------------------- passes
// Lanes over q (s a multiple of L). The r-1 twiddles of a p are broadcast
// once into a small table on the stack, read at fixed offsets by the q loop.
template <class V, int R_, int Sign, bool Twiddled>
inline void pass_q_row(int r, long s, long m, const typename V::T* in, typename V::T* out, const typename V::R* wr,
                       const typename V::R* wi, const typename V::T* rc) {
  using R = typename V::R;
  using C = simd::cops<V, Sign>;
  using B = bfly<V, Sign>;
  constexpr int cap = R_ ? R_ : max_generic_radix;
  const long is = 2 * s * m, os = 2 * s;
  for (long q = 0; q < s; q += V::L) {
    R a[cap];
    ZAR_UNROLL
    for (int k = 0; k < r; ++k) a[k] = V::load(in + 2 * q + is * k);
    B::template run<R_>(a, r, rc);
    V::store(out + 2 * q, a[0]);
    ZAR_UNROLL
    for (int j = 1; j < r; ++j)
      V::store(out + 2 * q + os * j, Twiddled ? C::twiddle(a[j], wr[j - 1], wi[j - 1]) : a[j]);
  }
}

template <class V, int R_, int Sign>
void pass_q(const pass<typename V::T>& g, long s, const typename V::T* src, typename V::T* dst) {
  using R = typename V::R;
  const int r = R_ ? R_ : g.r;
  const long m = g.m;
  constexpr int cap = R_ ? R_ : max_generic_radix;
  R wr[cap - 1], wi[cap - 1];
  pass_q_row<V, R_, Sign, false>(r, s, m, src, dst, wr, wi, g.rc);
  for (long p = 1; p < m; ++p) {
    ZAR_UNROLL
    for (int j = 1; j < r; ++j) {
      wr[j - 1] = V::bcast(g.tw + 2 * ((j - 1) * m + p));
      wi[j - 1] = V::bcast(g.tw + 2 * ((j - 1) * m + p) + 1);
    }
    pass_q_row<V, R_, Sign, true>(r, s, m, src + 2 * s * p, dst + 2 * s * r * p, wr, wi, g.rc);
  }
}

// Lanes over p (s == 1, m a multiple of L).
template <class V, int R_, int Sign>
void pass_p(const pass<typename V::T>& g, const typename V::T* src, typename V::T* dst) {
  using T = typename V::T;
  using R = typename V::R;
  using C = simd::cops<V, Sign>;
  using B = bfly<V, Sign>;
  const int r = R_ ? R_ : g.r;
  const long m = g.m;
  constexpr int cap = R_ ? R_ : max_generic_radix;
  for (long p = 0; p < m; p += V::L) {
    R a[cap];
    ZAR_UNROLL
    for (int k = 0; k < r; ++k) a[k] = V::load(src + 2 * (p + m * k));
    B::template run<R_>(a, r, g.rc);
    T* out = dst + 2 * r * p;
    if constexpr (R_ == 4 && V::L > 1) {
      // the outputs of the L butterflies are L consecutive rows of four
      V::store4_rows(out, a[0], C::twiddle_l(a[1], g.tw + 2 * p), C::twiddle_l(a[2], g.tw + 2 * (m + p)),
                     C::twiddle_l(a[3], g.tw + 2 * (2 * m + p)));
      continue;
    }
    V::scatter(out, 2 * r, a[0]);
    ZAR_UNROLL
    for (int j = 1; j < r; ++j) V::scatter(out + 2 * j, 2 * r, C::twiddle_l(a[j], g.tw + 2 * ((j - 1) * m + p)));
  }
}

template <class T, int R_, int Sign>
void run_pass_r(const pass<T>& g, long s, const T* src, T* dst) {
  using F = simd::family<T>;
  using VF = typename F::full;
  using VH = typename F::half;
  using V1 = typename F::one;
  if (s % VF::L == 0)
    pass_q<VF, R_, Sign>(g, s, src, dst);
  else if (s == 1 && g.m % VF::L == 0)
    pass_p<VF, R_, Sign>(g, src, dst);
  else if (VH::L > 1 && s % VH::L == 0)
    pass_q<VH, R_, Sign>(g, s, src, dst);
  else if (VH::L > 1 && s == 1 && g.m % VH::L == 0)
    pass_p<VH, R_, Sign>(g, src, dst);
  else
    pass_q<V1, R_, Sign>(g, s, src, dst);
}

template <class T, int Sign>
void run_pass(const pass<T>& g, long s, const T* src, T* dst) {
  switch (g.r) {
    case 2: return run_pass_r<T, 2, Sign>(g, s, src, dst);
    case 3: return run_pass_r<T, 3, Sign>(g, s, src, dst);
    case 4: return run_pass_r<T, 4, Sign>(g, s, src, dst);
    case 5: return run_pass_r<T, 5, Sign>(g, s, src, dst);
    case 7: return run_pass_r<T, 7, Sign>(g, s, src, dst);
    case 8: return run_pass_r<T, 8, Sign>(g, s, src, dst);
    default: return run_pass_r<T, 0, Sign>(g, s, src, dst);
  }
}

// The chain of passes for s0 interleaved transforms, from src to dst; tmp
// holds n*s0 complex values. src may equal dst. The last pass (m = 1) reads
// and writes the same positions, so it may run in place; the buffers are
// assigned backwards from it so that no other pass writes its own input.
template <class T, int Sign>
void chain(const pass<T>* g, int np, long s0, const T* src, T* dst, T* tmp) {
  if (np == 0) {  // length 1
    if (src != dst)
      for (long q = 0; q < 2 * s0; ++q) dst[q] = src[q];
    return;
  }
  if (np == 1) {
    run_pass<T, Sign>(g[0], s0, src, dst);
    return;
  }
  // Destination of pass i: dst for the last; before it alternate tmp/dst,
  // choosing the parity (the second-to-last pass may write dst too) so that
  // the first pass does not write over src when src == dst.
  bool last_but_one_dst = false;
  if (src == dst) last_but_one_dst = (np - 2) % 2 == 1;  // first pass then writes tmp
  long s = s0;
  const T* in = src;
  for (int i = 0; i < np; ++i) {
    T* out;
    if (i == np - 1)
      out = dst;
    else {
      const int back = np - 2 - i;  // 0 for the second-to-last pass
      const bool to_dst = (back % 2 == 0) ? last_but_one_dst : !last_but_one_dst;
      out = to_dst ? dst : tmp;
    }
    run_pass<T, Sign>(g[i], s, in, out);
    in = out;
    s *= g[i].r;
  }
}

}  // namespace zar::fft::detail

#pragma GCC diagnostic pop
