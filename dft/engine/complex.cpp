// The complex one-dimensional engine: plans built inside caller memory and
// their execution over batches with any strides, interleaved or split.
//
// Routes (chosen when the plan is built):
// - chain: n factors into radices 2, 3, 4, 5, 7, 8 and odd primes up to
//   max_generic_radix; Stockham passes (complex_kernels.h).
// - sixstep: long transforms (n >= long_min), n = n1 x n2 with both near
//   sqrt(n): blocks of columns gathered and transformed together, twiddled,
//   then blocks of rows, each block small enough for the caches.
// - chirp: lengths with a larger prime factor, as a circular convolution of
//   length M >= 2n - 1 (a power of two, or 3 or 5 times one).
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <type_traits>

#include "dft/engine/complex_plan.h"
#include "zar/types.h"

namespace zar::fft {

namespace {
using detail::pass;
using detail::route;

inline size_t up64(size_t b) { return (b + 63) & ~size_t(63); }

// Lengths from which the six-step route is taken. Below, the passes over
// the whole array run from the second-level cache (measured faster up to
// 2^19 on a 1 MiB L2).
constexpr long long_min = 1L << 20;

// Transforms interleaved per block: a 64-byte line of complex values.
template <class T> constexpr long block_width = 64 / (2 * sizeof(T));
// Columns or rows per block of the six-step route.
template <class T> constexpr long six_block = 4 * block_width<T>;
// Batches of transforms up to this length run interleaved by blocks
// (contiguous ones only up to the second).
constexpr long batch_max_n = 1024, batch_contiguous_n = 32;

// Bump allocation in the plan block; with no block it only counts.
// A build-time work area may be taken last and given back (release).
struct arena {
  char* base;
  size_t used = 0, peak = 0;
  template <class X> X* take(size_t count) {
    X* p = base ? reinterpret_cast<X*>(base + used) : nullptr;
    used += up64(count * sizeof(X));
    if (used > peak) peak = used;
    return p;
  }
  void release(size_t mark) { used = mark; }
};


// cos and sin of 2 pi e / N in long double: the quadrant and the octant are
// taken exactly in integers, so the library functions only see arguments
// up to pi/4 (accurate and quick there).
inline void cis(unsigned long long e, unsigned long long N, long double* c, long double* s) {
  constexpr long double half_pi = 1.570796326794896619231321691639751442L;
  e %= N;
  const unsigned long long q = 4 * e / N, r = 4 * e % N;  // 2 pi e/N = (q + r/N) pi/2
  long double cr, sr;
  if (2 * r <= N) {
    const long double a = half_pi * static_cast<long double>(r) / static_cast<long double>(N);
    cr = std::cos(a), sr = std::sin(a);
  } else {
    const long double a = half_pi * static_cast<long double>(N - r) / static_cast<long double>(N);
    cr = std::sin(a), sr = std::cos(a);
  }
  switch (q) {
    case 0: *c = cr, *s = sr; break;
    case 1: *c = -sr, *s = cr; break;
    case 2: *c = -cr, *s = -sr; break;
    default: *c = sr, *s = -cr; break;
  }
}

// e^{-2 pi i e / N} rounded from long double
template <class T> void root(T* w, unsigned long long e, unsigned long long N) {
  long double c, s;
  cis(e, N, &c, &s);
  w[0] = static_cast<T>(c);
  w[1] = static_cast<T>(-s);
}

// Factorisation into pass radices; false when a prime factor exceeds the
// generic radix.
bool radices(long n, int* r, int* np) {
  if (n < 1) {  // nothing to transform
    *np = 0;
    return true;
  }
  int e2 = 0;
  long odd = n;
  while (odd % 2 == 0) {
    odd /= 2;
    ++e2;
  }
  int k = 0;
  // Powers of two: radix 4, one 8 (last, where it needs no twiddles) or
  // one 2 for an odd exponent. When other factors remain, the first pass
  // keeps a factor 2 for the next so that vectors run over consecutive
  // elements in both.
  int twos[40], nt = 0;
  int e = e2;
  if (e % 2 == 1) e -= e >= 3 ? 3 : 1;
  for (; e > 0; e -= 2) twos[nt++] = 4;
  if (e2 % 2 == 1) twos[nt++] = e2 >= 3 ? 8 : 2;
  if (odd > 1 && nt > 0 && nt == 1 && twos[0] != 2) {
    // a single radix holding every factor 2: split it
    const int t = twos[0];
    twos[0] = t / 2 == 4 ? 4 : 2;
    twos[1] = 2;
    nt = 2;
  }
  if (nt > 0) r[k++] = twos[0];
  for (int f : {3, 5, 7}) {
    while (odd % f == 0) {
      r[k++] = f;
      odd /= f;
    }
  }
  for (long f = 11; odd > 1; f += 2) {
    if (f > detail::max_generic_radix) return false;
    while (odd % f == 0) {
      r[k++] = static_cast<int>(f);
      odd /= f;
    }
  }
  for (int i = 1; i < nt; ++i) r[k++] = twos[i];
  *np = k;
  return true;
}

// n1 x n2 = n, both near sqrt(n), for the six-step route
bool split(long n, long* n1, long* n2) {
  long best = 0;
  for (long a = 2; a * a <= n; ++a)
    if (n % a == 0) best = a;
  if (best < 16) return false;
  *n1 = best;
  *n2 = n / best;
  return true;
}


template <class T> complex_plan<T>* build(long n, arena& ar, size_t* scratch);

template <class T> void build_chain(complex_plan<T>* p, long n, const int* r, int np, arena& ar, size_t* scratch) {
  long m = n;
  for (int i = 0; i < np; ++i) {
    m /= r[i];
    const long N = m * r[i];
    T* tw = m > 1 ? ar.take<T>(2 * (r[i] - 1) * m) : nullptr;
    T* rc = (r[i] % 2 == 1) ? ar.take<T>(2 * r[i]) : nullptr;
    if (!p) continue;
    for (int j = 1; j < r[i] && tw; ++j)
      for (long q = 0; q < m; ++q) root(tw + 2 * ((j - 1) * m + q), static_cast<unsigned long long>(j) * q, N);
    for (int k = 0; k < r[i] && rc; ++k) {
      long double c, s;
      cis(k, r[i], &c, &s);
      rc[2 * k] = static_cast<T>(c);
      rc[2 * k + 1] = static_cast<T>(s);
    }
    p->passes[i] = {r[i], m, tw, rc};
  }
  const long b = n <= batch_max_n ? block_width<T> : 1;
  if (p) {
    p->how = route::chain;
    p->np = np;
    p->batch = b;
  }
  // a gathered block and the passes' second buffer
  *scratch = 2 * up64(2 * n * b * sizeof(T));
}

template <class T> void run_one(const complex_plan<T>* p, int sign, const T* x, T* y, T* scratch);

template <class T> complex_plan<T>* build(long n, arena& ar, size_t* scratch) {
  auto* p = ar.take<complex_plan<T>>(1);
  if (p) {
    std::memset(static_cast<void*>(p), 0, sizeof *p);
    p->n = n;
  }
  int r[detail::max_passes], np = 0;
  long n1 = 0, n2 = 0;
  if (n >= long_min && split(n, &n1, &n2) && n1 % six_block<T> == 0 && n2 % six_block<T> == 0 &&
      radices(n1, r, &np) && radices(n2, r, &np)) {
    size_t s1 = 0, s2 = 0;
    auto* c = build<T>(n1, ar, &s1);
    auto* w = build<T>(n2, ar, &s2);
    T* tw = ar.take<T>(2 * n);
    if (p) {
      for (long k1 = 0; k1 < n1; ++k1)
        for (long j2 = 0; j2 < n2; ++j2)
          root(tw + 2 * (k1 * n2 + j2), static_cast<unsigned long long>(k1) * j2, static_cast<unsigned long long>(n));
      p->how = route::sixstep;
      p->n1 = n1;
      p->n2 = n2;
      p->cols = c;
      p->rows = w;
      p->tw = tw;
    }
    const long big = n1 > n2 ? n1 : n2;
    // the intermediate array and two blocks of columns or rows
    *scratch = up64(2 * n1 * (n2 + six_block<T>) * sizeof(T)) + 2 * up64(2 * big * six_block<T> * sizeof(T));
  } else if (radices(n, r, &np)) {
    build_chain(p, n, r, np, ar, scratch);
  } else {
    // the shortest of 2^k, 3 * 2^k and 5 * 2^k (k >= 2) holding 2n - 1
    long M = 0;
    for (long f : {1L, 3L, 5L}) {
      long m = 4 * f;
      while (m < 2 * n - 1) m *= 2;
      if (M == 0 || m < M) M = m;
    }
    size_t sub_scratch = 0;
    auto* sub = build<T>(M, ar, &sub_scratch);
    T* chirp = ar.take<T>(2 * n);
    T* kernel = ar.take<T>(2 * M);
    if (p) {
      const unsigned long long n2x = 2ull * static_cast<unsigned long long>(n);
      for (long k = 0; k < n; ++k) {
        const unsigned long long kk = static_cast<unsigned long long>(k);
        root(chirp + 2 * k, (kk * kk) % n2x, n2x);  // e^{-i pi k^2 / n}
      }
      // b_j = conj(chirp_j) for |j| < n, placed cyclically
      std::memset(kernel, 0, 2 * M * sizeof(T));
      for (long k = 0; k < n; ++k) {
        kernel[2 * k] = chirp[2 * k];
        kernel[2 * k + 1] = -chirp[2 * k + 1];
        if (k > 0) {
          kernel[2 * (M - k)] = chirp[2 * k];
          kernel[2 * (M - k) + 1] = -chirp[2 * k + 1];
        }
      }
      p->how = route::chirp;
      p->M = M;
      p->chirp = chirp;
      p->kernel = kernel;
      p->sub = sub;
    }
    // The kernel is transformed once here, with a work area at the end of
    // the block that is given back afterwards.
    const size_t mark = ar.used;
    T* work = ar.take<T>(sub_scratch / sizeof(T) + 1);
    if (p) {
      run_one(sub, -1, kernel, kernel, work);
      const T inv = T(1) / static_cast<T>(M);
      for (long k = 0; k < 2 * M; ++k) kernel[k] *= inv;
    }
    ar.release(mark);
    *scratch = up64(2 * M * sizeof(T)) + sub_scratch;
  }
  if (p) p->scratch = *scratch;
  return p;
}

// ---------------------------------------------------------------- data access
// Element j of transform t, interleaved or split, read as a (re, im) pair;
// a cursor walks the elements of one transform.
template <class T> struct interleaved {
  T* p;
  long s, d;
  T* at(long t, long j) const { return offset(p, 2 * (static_cast<long long>(t) * d + static_cast<long long>(j) * s)); }
  struct cursor {
    T* q;
    long step;
    void get(T* c) const { std::memcpy(c, q, 2 * sizeof(T)); }
    void put(const T* c) const { std::memcpy(q, c, 2 * sizeof(T)); }
    void next() { q += step; }
  };
  cursor start(long t) const { return {at(t, 0), 2 * s}; }
  // transform t as one contiguous array, or null
  T* whole(long t) const { return s == 1 ? at(t, 0) : nullptr; }
};
template <class T> struct split_parts {
  T *re, *im;
  long s, d;
  struct cursor {
    T *r, *i;
    long step;
    void get(T* c) const { c[0] = *r, c[1] = *i; }
    void put(const T* c) const { *r = c[0], *i = c[1]; }
    void next() { r += step, i += step; }
  };
  cursor start(long t) const {
    const long long o = static_cast<long long>(t) * d;
    return {offset(re, o), offset(im, o), s};
  }
  T* whole(long) const { return nullptr; }
};

// a block of bs (at most max_block) transforms t0.. interleaved:
// buf[j*bs + b] = x(t0 + b, j)
constexpr long max_block = 8;
template <class T, class In> void gather(const In& x, long t0, long bs, long n, T* buf) {
  typename In::cursor c[max_block];
  for (long b = 0; b < bs; ++b) c[b] = x.start(t0 + b);
  for (long j = 0; j < n; ++j)
    for (long b = 0; b < bs; ++b) {
      c[b].get(buf + 2 * (j * bs + b));
      c[b].next();
    }
}
template <class T, class Out> void scatter(const T* buf, long t0, long bs, long n, T scale, const Out& y) {
  typename Out::cursor c[max_block];
  for (long b = 0; b < bs; ++b) c[b] = y.start(t0 + b);
  const bool scaled = scale != T(1);
  for (long j = 0; j < n; ++j)
    for (long b = 0; b < bs; ++b) {
      const T* v = buf + 2 * (j * bs + b);
      if (scaled) {
        const T s[2] = {v[0] * scale, v[1] * scale};
        c[b].put(s);
      } else {
        c[b].put(v);
      }
      c[b].next();
    }
}

template <class T> void scale_array(T* y, long count, T scale) {
  for (long k = 0; k < count; ++k) y[k] *= scale;
}

// ---------------------------------------------------------------- routes
// One transform, contiguous, x may equal y; no scaling.
template <class T, int Sign> void one(const complex_plan<T>* p, const T* x, T* y, T* scratch);

// Blocks of B = six_block columns, then of B rows, each row of a block four
// cache lines; n1 and n2 are multiples of B (see build). The intermediate
// array S has rows of n2 + B elements, off the power-of-two strides that
// would map a block's rows onto the same cache sets.
template <class T, int Sign> void sixstep(const complex_plan<T>* p, const T* x, T* y, T* scratch) {
  using V = typename simd::family<T>::full;
  using C = simd::cops<V, Sign>;
  constexpr long B = six_block<T>, W = B / V::L;  // vectors per block row
  const long n1 = p->n1, n2 = p->n2, pitch = n2 + B;
  const long big = n1 > n2 ? n1 : n2;
  T* S = scratch;
  T* A = scratch + up64(2 * n1 * pitch * sizeof(T)) / sizeof(T);
  T* A2 = A + up64(2 * big * B * sizeof(T)) / sizeof(T);
  // columns j2.. of x (n1 x n2, row-major): transform, twiddle, to S
  for (long j2 = 0; j2 < n2; j2 += B) {
    for (long j1 = 0; j1 < n1; ++j1) {
      const T* src = x + 2 * (j1 * n2 + j2);
      ZAR_UNROLL
      for (long v = 0; v < W; ++v) V::store(A + 2 * (j1 * B + v * V::L), V::load(src + 2 * v * V::L));
    }
    detail::chain<T, Sign>(p->cols->passes, p->cols->np, B, A, A, A2);
    for (long k1 = 0; k1 < n1; ++k1) {
      const long o = 2 * (k1 * n2 + j2), os = 2 * (k1 * pitch + j2);
      ZAR_UNROLL
      for (long v = 0; v < W; ++v)
        V::store(S + os + 2 * v * V::L, C::twiddle_l(V::load(A + 2 * (k1 * B + v * V::L)), p->tw + o + 2 * v * V::L));
    }
  }
  // rows k1.. of S: gathered element by element into B interleaved rows,
  // transformed, to y at k1 + n1*k2
  for (long k1 = 0; k1 < n1; k1 += B) {
    const T* row = S + 2 * k1 * pitch;
    for (long j2 = 0; j2 < n2; ++j2) {
      T* a = A + 2 * j2 * B;
      ZAR_UNROLL
      for (long b = 0; b < B; ++b) std::memcpy(a + 2 * b, row + 2 * (b * pitch + j2), 2 * sizeof(T));
    }
    detail::chain<T, Sign>(p->rows->passes, p->rows->np, B, A, A, A2);
    for (long k2 = 0; k2 < n2; ++k2) {
      T* dst = y + 2 * (k1 + n1 * k2);
      ZAR_UNROLL
      for (long v = 0; v < W; ++v) V::store(dst + 2 * v * V::L, V::load(A + 2 * (k2 * B + v * V::L)));
    }
  }
}

template <class T, int Sign> void chirp(const complex_plan<T>* p, const T* x, T* y, T* scratch) {
  const long n = p->n, M = p->M;
  T* A = scratch;
  T* sub_scratch = scratch + up64(2 * M * sizeof(T)) / sizeof(T);
  const T* c = p->chirp;
  // the backward transform is the conjugate of the forward one of conj(x)
  const T cj = Sign < 0 ? T(1) : T(-1);
  for (long j = 0; j < n; ++j) {
    const T xr = x[2 * j], xi = cj * x[2 * j + 1];
    A[2 * j] = xr * c[2 * j] - xi * c[2 * j + 1];
    A[2 * j + 1] = xr * c[2 * j + 1] + xi * c[2 * j];
  }
  std::memset(A + 2 * n, 0, 2 * (M - n) * sizeof(T));
  one<T, -1>(p->sub, A, A, sub_scratch);
  const T* k = p->kernel;
  for (long j = 0; j < M; ++j) {
    const T ar = A[2 * j], ai = A[2 * j + 1];
    A[2 * j] = ar * k[2 * j] - ai * k[2 * j + 1];
    A[2 * j + 1] = ar * k[2 * j + 1] + ai * k[2 * j];
  }
  one<T, 1>(p->sub, A, A, sub_scratch);
  for (long j = 0; j < n; ++j) {
    const T ar = A[2 * j], ai = A[2 * j + 1];
    y[2 * j] = ar * c[2 * j] - ai * c[2 * j + 1];
    y[2 * j + 1] = cj * (ar * c[2 * j + 1] + ai * c[2 * j]);
  }
}

template <class T, int Sign> void one(const complex_plan<T>* p, const T* x, T* y, T* scratch) {
  switch (p->how) {
    case route::chain: return detail::chain<T, Sign>(p->passes, p->np, 1, x, y, scratch);
    case route::sixstep: return sixstep<T, Sign>(p, x, y, scratch);
    case route::chirp: return chirp<T, Sign>(p, x, y, scratch);
  }
}

template <class T> void run_one(const complex_plan<T>* p, int sign, const T* x, T* y, T* scratch) {
  if (sign < 0)
    one<T, -1>(p, x, y, scratch);
  else
    one<T, 1>(p, x, y, scratch);
}

// A batch through any layout.
template <class T, int Sign, class In, class Out>
void batch(const complex_plan<T>* p, T scale, const In& x, const Out& y, long howmany, T* scratch) {
  const long n = p->n;
  if (n < 1) return;
  if constexpr (std::is_same_v<T, double> && std::is_same_v<In, interleaved<T>>) {
    // several double transforms of 2..64 points: the fixed kernels, two
    // transforms at a time
    if (howmany > 1 && n >= 2 && n <= 64) {
      detail::small_kernels[(Sign < 0 ? 0 : 63) + n - 2](scale, x.p, x.s, x.d, y.p, y.s, y.d, howmany);
      return;
    }
  }
  // Contiguous transforms run one at a time from about 64 points on (the
  // interleaving copies cost more than they save there); strided ones are
  // gathered anyway, several at a time.
  const bool contiguous = x.whole(0) && y.whole(0);
  if (p->how == route::chain && p->batch > 1 && (contiguous ? howmany > 1 && n <= batch_contiguous_n : true)) {
    // blocks of transforms interleaved, so vectors span transforms
    T* A = scratch;
    T* A2 = scratch + up64(2 * n * p->batch * sizeof(T)) / sizeof(T);
    for (long t = 0; t < howmany; t += p->batch) {
      const long bs = howmany - t < p->batch ? howmany - t : p->batch;
      gather(x, t, bs, n, A);
      detail::chain<T, Sign>(p->passes, p->np, bs, A, A, A2);
      scatter(A, t, bs, n, scale, y);
    }
    return;
  }
  // one transform at a time: straight from x to y when both are contiguous,
  // otherwise through a contiguous copy at the end of the scratch
  T* work = scratch;
  T* copy = scratch + p->scratch / sizeof(T) - 2 * n;
  for (long t = 0; t < howmany; ++t) {
    const T* xt = x.whole(t);
    T* yt = y.whole(t);
    if (xt && yt) {
      one<T, Sign>(p, xt, yt, work);
      if (scale != T(1)) scale_array(yt, 2 * n, scale);
    } else {
      gather(x, t, 1, n, copy);
      one<T, Sign>(p, copy, copy, work);
      scatter(copy, t, 1, n, scale, y);
    }
  }
}
}  // namespace

template <class T> footprint complex_footprint(long n) {
  arena ar{nullptr};
  size_t scratch = 0;
  build<T>(n, ar, &scratch);
  return {ar.peak, scratch + up64(2 * n * sizeof(T))};
}

template <class T> complex_plan<T>* complex_build(long n, void* mem) {
  arena ar{static_cast<char*>(mem)};
  size_t scratch = 0;
  complex_plan<T>* p = build<T>(n, ar, &scratch);
  // the run's scratch also holds one contiguous copy of a transform
  p->scratch = scratch + up64(2 * n * sizeof(T));
  return p;
}

template <class T>
void complex_run(const complex_plan<T>* p, int sign, T scale, const T* x, long is, long idist, T* y, long os,
                 long odist, long howmany, void* scratch) {
  const interleaved<T> in{const_cast<T*>(x), is, idist};
  const interleaved<T> out{y, os, odist};
  T* s = static_cast<T*>(scratch);
  if (sign < 0)
    batch<T, -1>(p, scale, in, out, howmany, s);
  else
    batch<T, 1>(p, scale, in, out, howmany, s);
}

template <class T>
void complex_run_split(const complex_plan<T>* p, int sign, T scale, const T* xr, const T* xi, long is, long idist,
                       T* yr, T* yi, long os, long odist, long howmany, void* scratch) {
  const split_parts<T> in{const_cast<T*>(xr), const_cast<T*>(xi), is, idist};
  const split_parts<T> out{yr, yi, os, odist};
  T* s = static_cast<T*>(scratch);
  if (sign < 0)
    batch<T, -1>(p, scale, in, out, howmany, s);
  else
    batch<T, 1>(p, scale, in, out, howmany, s);
}

#define ZAR_FFT_COMPLEX(T)                                                                                      \
  template footprint complex_footprint<T>(long);                                                                \
  template complex_plan<T>* complex_build<T>(long, void*);                                                      \
  template void complex_run<T>(const complex_plan<T>*, int, T, const T*, long, long, T*, long, long, long, void*); \
  template void complex_run_split<T>(const complex_plan<T>*, int, T, const T*, const T*, long, long, T*, T*, long, \
                                     long, long, void*);
ZAR_FFT_COMPLEX(float)
ZAR_FFT_COMPLEX(double)

}  // namespace zar::fft
